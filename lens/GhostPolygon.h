#pragma once

namespace k7 {

struct GhostPoint {
    float X;
    float Y;
};

/// What the shading of a ghost needs, in samples: there are two to a pixel along each axis.
struct GhostLight {
    static constexpr int kOversample = 2;

    int Red = 0; ///< the colour, on the scale of words times the gain
    int Green = 0;
    int Blue = 0;
    int Peak = 0; ///< the largest of the three
    float CentreX = 0.0f;
    float CentreY = 0.0f;
    float InnerRadius = 0.0f; ///< the light falls off from the inner to the outer radius
    float OuterRadius = 0.0f;
    float DirX = 0.0f; ///< towards where the ghost whitens
    float DirY = 0.0f;
    float Falloff = 0.0f;
    bool EdgeBoost = false;
};

/// The outline of one ghost, in lens space when traced, then in samples.
struct GhostPolygon : GhostLight {
    static constexpr int kMaxSides = 86;
    static constexpr int kRoom = kMaxSides + 4; ///< each side of a frame cuts one corner into two

    int Count = 0;
    GhostPoint Vertices[kRoom] = {};
};

/// Lowest x, highest x, lowest y, highest y.
using GhostRect = float[4];

/// False, with no vertices left, if the polygon lies entirely beyond one side of the rectangle.
bool RejectPolygon(GhostPolygon* polygon, const GhostRect& rect);

/// Clips the polygon to the rectangle (Sutherland and Hodgman, Reentrant Polygon Clipping, 1974). False, with
/// no vertices left, if nothing remains. Vertices beyond kRoom, which only an outline that crosses itself can
/// have, are dropped.
bool ClipPolygon(GhostPolygon* polygon, const GhostRect& rect);

} // namespace k7
