#pragma once

#include "lens/GhostShade.h"

namespace k7 {

/// Shades all samples of a triangle that lie on the canvas (P. Heckbert, Generic Convex Polygon Scan
/// Conversion and Clipping, Graphics Gems, 1990). The vertices do not lie far outside the frame.
void ScanTriangle(const GhostCanvas& canvas, const GhostTriangle& triangle);

} // namespace k7
