#pragma once

#include "lens/GhostPolygon.h"

namespace k7 {

/// Where the ghosts of a chunk are summed: one plane per colour with one cell per pixel, on the scale of
/// words times 4, and the samples that may be drawn.
struct GhostCanvas {
    int* Red = nullptr;
    int* Green = nullptr;
    int* Blue = nullptr;
    int Width = 0;        ///< of the planes
    float AspectX = 1.0f; ///< of a pixel
    float AspectY = 1.0f;
    int LowX = 0; ///< both ends of a range are included
    int HighX = 0;
    int LowY = 0;
    int HighY = 0;
};

/// A triangle of the fan that fills a ghost: its centroid and two neighbours on the outline. Previous and
/// Next are the outline's vertices before and after those two.
struct GhostTriangle {
    const GhostLight* Light;
    GhostPoint Vertices[3];
    GhostPoint Previous;
    GhostPoint Next;
};

/// Adds the light of the samples of row y between xa and xb, three times. The row is on the canvas.
void ShadeSpan(const GhostCanvas& canvas, const GhostTriangle& triangle, int y, float xa, float xb);

} // namespace k7
