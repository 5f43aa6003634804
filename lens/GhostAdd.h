#pragma once

#include "lens/GhostShade.h"
#include "library/Numbers.h"

namespace k7 {

/// Adds the sums of row y to a row of the picture, `in` and `out`. With `withAlpha` alpha rises by the
/// light's luminance, and stops at full scale unless it was above; otherwise it is that of `in`. Floats may
/// rise beyond full scale.
template <class Sample>
void AddGhosts(const GhostCanvas& canvas, int y, bool withAlpha, const Sample* in, Sample* out);

} // namespace k7
