#pragma once

#include "lens/GhostShade.h"
#include "library/Numbers.h"

namespace k7 {

/// Adds the sums of row y to a row of the picture, `in` and `out`. With `withAlpha` alpha rises by the
/// light's luminance, otherwise it is that of `in`.
void AddGhosts(const GhostCanvas& canvas, int y, bool withAlpha, const u16* in, u16* out);

} // namespace k7
