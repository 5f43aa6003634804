#pragma once

#include <cstdint>

namespace k7 {

/// One pixel of a streak: its offset from the pixel being computed, and its share.
struct BlurKernel {
    std::int16_t Dx;
    std::int16_t Dy;
    float Weight;
};

/// Draws a streak as a rectangle one pixel wide and `Fraction` (clamped to 1; negative: the other way) of
/// `Capacity` pixels long, from the middle of pixel (0, 0) in the direction `Degrees`, or with its middle
/// there if `Centred`. Each pixel that it covers by more than a thousandth becomes an entry, weighted by the
/// covered area, rows upward and columns upward within them. `Kernel` takes the first Capacity - 1 of them,
/// `Count` says how many there are; their weights add up to 1. A length that is NaN counts as 0, and so
/// does a direction that is not finite.
void MakeBlurKernel(float Fraction, float Degrees, int Capacity, int Centred, int* Count, BlurKernel* Kernel);

/// Corners of a polygon in order, x first. A polygon of four corners clipped by four sides has 8 at most, and
/// 19 if rounding made it as ragged as can be.
struct Polygon {
    int Count = 0;
    float Corner[20][2];
};

/// Cuts the polygon down to a rectangle. False if nothing is left.
bool ClipToCell(Polygon* polygon, float Left, float Right, float Bottom, float Top);

/// One step of Sutherland and Hodgman's clipping (1974): what lies where Sign x corner[Axis] <= Bound.
void ClipHalfPlane(const Polygon& source, Polygon* destination, int Axis, float Sign, float Bound);

} // namespace k7
