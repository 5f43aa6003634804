#pragma once

#include "lens/LensStore.h"

namespace k7 {

// Lens space: x and y run from -1 to 1 across the frame, z from 1 at the front surface to -1 at the last one.

/// Where a ray meets a surface. `ray` is a point and a unit direction. False if it does not meet the half of
/// the sphere that holds the vertex; `point` is then the hit on the other half, or as it was if there is
/// none.
bool IntersectSurface(const LensTable& lens, int surface, const float ray[6], float point[3]);

} // namespace k7
