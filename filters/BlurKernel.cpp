#include "filters/BlurKernel.h"

#include "library/Numbers.h"

#include <algorithm>
#include <cmath>

namespace k7 {

namespace {

constexpr double kRadians = 0.017453292522222223; // 3.141592654 / 180
constexpr float kLeastFraction = 0.0001f;
constexpr float kLeastArea = 0.001f;
constexpr double kLeastTotal = 0.00001;

struct Rectangle {
    float corner[4][2];

    float Least(int axis) const {
        return std::min({corner[0][axis], corner[1][axis], corner[2][axis], corner[3][axis]});
    }
    float Greatest(int axis) const {
        return std::max({corner[0][axis], corner[1][axis], corner[2][axis], corner[3][axis]});
    }
};

Rectangle MakeStreak(double angle, float length, bool centred) {
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    const float ox = centred ? static_cast<float>(cosine * length * -0.5) : 0.0f;
    const float oy = centred ? static_cast<float>(sine * length * -0.5) : 0.0f;
    const float s = static_cast<float>(sine);
    const float c = static_cast<float>(cosine);
    const float hs = s * 0.5f;
    const float hc = c * 0.5f;
    return {{{ox + hs, oy - hc},
             {ox + c * length + hs, oy + s * length - hc},
             {ox + c * length - hs, oy + s * length + hc},
             {ox - hs, oy + hc}}};
}

struct Span {
    int first;
    int last;
};

/// The columns in which the rectangle can meet a row of pixels, with a margin that the rounding of the
/// clipping does not bridge.
Span ColumnsOfRow(const Rectangle& streak, int row) {
    constexpr double margin = 2.0;
    double least = INFINITY;
    double greatest = -INFINITY;
    for (int i = 0; i < 4; ++i) {
        const double fromX = streak.corner[i][0];
        const double fromY = streak.corner[i][1];
        const double run = streak.corner[(i + 1) % 4][0] - fromX;
        const double rise = streak.corner[(i + 1) % 4][1] - fromY;
        if (std::max(fromY, fromY + rise) < row - margin || std::min(fromY, fromY + rise) > row + margin)
            continue;
        const auto addPoint = [&](double y) {
            const double x = rise == 0.0 ? fromX : fromX + run * std::clamp((y - fromY) / rise, 0.0, 1.0);
            least = std::min(least, x);
            greatest = std::max(greatest, x);
        };
        addPoint(row - margin);
        addPoint(row + margin);
    }
    return {Trunc(std::floor(least - margin)), Trunc(std::ceil(greatest + margin))};
}

float Area(const Polygon& polygon) {
    float sum = 0.0f;
    const float* previous = polygon.Corner[polygon.Count - 1];
    for (int i = 0; i < polygon.Count; ++i) {
        const float* corner = polygon.Corner[i];
        sum += (corner[1] + previous[1]) * (previous[0] - corner[0]);
        previous = corner;
    }
    return static_cast<float>(std::fabs(sum) * 0.5);
}

float CoveredArea(const Rectangle& streak, int column, int row) {
    const float x = static_cast<float>(column);
    const float y = static_cast<float>(row);
    Polygon polygon;
    polygon.Count = 4;
    std::copy_n(streak.corner[0], 8, polygon.Corner[0]);
    return ClipToCell(&polygon, x - 0.5f, x + 0.5f, y - 0.5f, y + 0.5f) ? Area(polygon) : 0.0f;
}

/// A streak of a picture too large for the kernel's offsets is cut.
int HoldOffset(float offset) {
    return Saturate<std::int16_t>(offset);
}

} // namespace

void ClipHalfPlane(const Polygon& source, Polygon* destination, int Axis, float Sign, float Bound) {
    const auto beyond = [&](const float* corner) { return Sign * corner[Axis] - Bound; };
    int count = 0;
    const float* previous = source.Corner[source.Count - 1];
    float previousBeyond = beyond(previous);
    for (int i = 0; i < source.Count; ++i) {
        const float* corner = source.Corner[i];
        const float cornerBeyond = beyond(corner);
        if ((cornerBeyond <= 0.0f) != (previousBeyond <= 0.0f)) {
            const float t = previousBeyond / (previousBeyond - cornerBeyond);
            float* crossing = destination->Corner[count++];
            crossing[0] = previous[0] + (corner[0] - previous[0]) * t;
            crossing[1] = previous[1] + (corner[1] - previous[1]) * t;
        }
        if (cornerBeyond <= 0.0f) std::copy_n(corner, 2, destination->Corner[count++]);
        previous = corner;
        previousBeyond = cornerBeyond;
    }
    destination->Count = count;
}

bool ClipToCell(Polygon* polygon, float Left, float Right, float Bottom, float Top) {
    int outside[4] = {};
    for (int i = 0; i < polygon->Count; ++i) {
        const float* corner = polygon->Corner[i];
        outside[0] += corner[0] < Left;
        outside[1] += corner[0] > Right;
        outside[2] += corner[1] < Bottom;
        outside[3] += corner[1] > Top;
    }
    const int count = polygon->Count;
    if (std::any_of(outside, outside + 4, [&](int corners) { return corners == count; })) {
        polygon->Count = 0;
        return false;
    }

    const struct {
        int axis;
        float sign;
        float bound;
    } sides[4] = {{0, -1.0f, -Left}, {0, 1.0f, Right}, {1, -1.0f, -Bottom}, {1, 1.0f, Top}};
    Polygon other;
    Polygon* from = polygon;
    Polygon* to = &other;
    for (int i = 0; i < 4; ++i) {
        if (outside[i] == 0) continue;
        ClipHalfPlane(*from, to, sides[i].axis, sides[i].sign, sides[i].bound);
        std::swap(from, to);
        if (from->Count == 0) break;
    }
    if (from != polygon) {
        polygon->Count = from->Count;
        std::copy_n(from->Corner[0], 2 * from->Count, polygon->Corner[0]);
    }
    return polygon->Count > 0;
}

void MakeBlurKernel(float Fraction, float Degrees, int Capacity, int Centred, int* Count,
                    BlurKernel* Kernel) {
    *Count = 0;
    if (std::isnan(Fraction)) Fraction = 0.0f;
    if (!std::isfinite(Degrees)) Degrees = 0.0f;

    // A negative length points the other way.
    double angle = Degrees * kRadians;
    if (std::fabs(Fraction) < kLeastFraction) {
        Fraction = kLeastFraction;
    } else if (Fraction < 0.0f) {
        Fraction = -Fraction;
        angle = Degrees * -kRadians;
    }
    Fraction = std::min(Fraction, 1.0f);
    const Rectangle streak = MakeStreak(angle, static_cast<float>(Capacity) * Fraction, Centred != 0);

    // Cover the pixels of its bounds.
    const int x0 = HoldOffset(std::floor(streak.Least(0)));
    const int x1 = HoldOffset(std::ceil(streak.Greatest(0)));
    const int y0 = HoldOffset(std::floor(streak.Least(1)));
    const int y1 = HoldOffset(std::ceil(streak.Greatest(1)));
    float total = 0.0f;
    for (int y = y0; y <= y1; ++y) {
        const Span columns = ColumnsOfRow(streak, y);
        for (int x = std::max(x0, columns.first); x <= std::min(x1, columns.last); ++x) {
            const float area = CoveredArea(streak, x, y);
            if (!(area > kLeastArea) || *Count >= Capacity - 1) continue;
            Kernel[(*Count)++] = {static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), area};
            total += area;
        }
    }

    if (!(total > kLeastTotal)) return;
    const float scale = 1.0f / total;
    for (int i = 0; i < *Count; ++i) Kernel[i].Weight *= scale;
}

} // namespace k7
