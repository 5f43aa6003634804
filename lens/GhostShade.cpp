#include "lens/GhostShade.h"

#include "baselib/Vector.h"
#include "library/Numbers.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace k7 {

namespace {

constexpr int kDrawings = 3;           // every triangle is counted this many times
constexpr float kFullSample = 65536.f; // a sample this bright makes its cell white on its own
constexpr int kFullCell = 0x40000000;  // sums stay below this and do not overflow
constexpr int kRun = 256;              // samples shaded in one go, an even number

// The rim is a tent over the distance from the outline, in samples.
constexpr float kRimTop = 10.0f;
constexpr float kRimReach = 20.0f;
constexpr float kShortSegment = 1e-5f; // a squared length below this makes a point

/// A side of the outline, prepared for measuring distances to it.
struct Segment {
    Segment(const GhostPoint& from, const GhostPoint& to)
        : x(from.X)
        , y(from.Y)
        , dx(to.X - from.X)
        , dy(to.Y - from.Y)
        , squared(dx * dx + dy * dy) {
        if (!(squared < kShortSegment)) return;
        dx = dy = 0.0f;
        squared = 1.0f;
    }

    float SquaredDistance(float sampleX, float sampleY) const {
        float t = ((sampleX - x) * dx + (sampleY - y) * dy) / squared;
        t = t > 0.0f ? t : 0.0f;
        t = t < 1.0f ? t : 1.0f;
        const float ex = sampleX - (x + t * dx);
        const float ey = sampleY - (y + t * dy);
        return ex * ex + ey * ey;
    }

    float x, y;
    float dx, dy;
    float squared; ///< length
};

/// Samples of a row, both ends included; empty when first lies above last.
struct Range {
    int first = std::numeric_limits<int>::max();
    int last = std::numeric_limits<int>::min();
};

/// What the shading of a row of a triangle's samples needs.
struct Row {
    Row(const GhostCanvas& canvas, const GhostTriangle& triangle, int sampleY)
        : light(*triangle.Light)
        , range(light.OuterRadius - light.InnerRadius)
        , aspectY(canvas.AspectY)
        , y(static_cast<float>(sampleY))
        , py((y - light.CentreY) / canvas.AspectX)
        , sides{{triangle.Vertices[1], triangle.Vertices[2]},
                {triangle.Next, triangle.Vertices[2]},
                {triangle.Vertices[1], triangle.Previous}} {}

    GhostLight light;
    float range; ///< of the falloff
    float aspectY;
    float y;
    float py; ///< height above the ghost's centre
    Segment sides[3];
};

/// Widens a range to all samples of a row that come closer than `reach` to a segment.
void Widen(Range* range, const Segment& segment, float y, float reach) {
    // The part of the segment whose height is near enough.
    float t0 = 0.0f;
    float t1 = 1.0f;
    if (segment.dy != 0.0f) {
        const float a = (y - reach - segment.y) / segment.dy;
        const float b = (y + reach - segment.y) / segment.dy;
        t0 = std::max(t0, std::min(a, b));
        t1 = std::min(t1, std::max(a, b));
    } else if (std::abs(y - segment.y) > reach) {
        return;
    }
    if (t0 > t1) return;
    const float x0 = segment.x + t0 * segment.dx;
    const float x1 = segment.x + t1 * segment.dx;
    range->first = std::min(range->first, Trunc(std::min(x0, x1) - reach) - 1);
    range->last = std::max(range->last, Trunc(std::max(x0, x1) + reach) + 1);
}

/// The samples that the rim may lift. No others need their distance from the outline.
Range RimOf(const Row& row, const GhostCanvas& canvas) {
    // One sample more, and what rounding can add in a very large picture.
    const float reach = kRimReach + 1.0f + 1e-6f * static_cast<float>(std::max(canvas.HighX, canvas.HighY));
    Range rim;
    if (row.light.EdgeBoost)
        for (const Segment& side : row.sides) Widen(&rim, side, row.y, reach);
    return rim;
}

/// The light of neighbouring samples.
struct Run {
    int red[kRun];
    int green[kRun];
    int blue[kRun];
};

/// Shades `count` samples from x on, to run[at] and on. A division by 0 has no branch of its own: a selection
/// after it drops the result.
template <bool rim>
[[gnu::always_inline]] inline void ShadeSamples(const Row& samples, int x, int count, int at, Run* run) {
    const Row row = samples; // a copy, which no write to the run can change
    const GhostLight& light = row.light;
    const float red = static_cast<float>(light.Red);
    const float green = static_cast<float>(light.Green);
    const float blue = static_cast<float>(light.Blue);
    const float peak = static_cast<float>(light.Peak);
    const float py2 = row.py * row.py;
    const bool step = row.range == 0.0f;

    for (int i = 0; i < count; ++i) {
        const float sampleX = static_cast<float>(x + i);
        const float px = (sampleX - light.CentreX) / row.aspectY;
        const float r = std::sqrt(px * px + py2);

        // How far out the sample lies between the two radii.
        const float beyond = r * light.Falloff - light.InnerRadius;
        const float stepped = beyond > 0.0f ? 1.0f : 0.0f;
        float f = step ? stepped : beyond / row.range;

        // How far it lies on the side that whitens. The centre itself is white, without a rim.
        const float along = px / r * light.DirX + row.py / r * light.DirY;
        const float u = along > 0.0f ? along : 0.0f;
        const float doubled = 2.0f * u * u;
        const float limited = doubled < 1.0f ? doubled : 1.0f;
        const float white = r > 0.0f ? limited : 1.0f;

        if constexpr (rim) {
            const float q0 = row.sides[0].SquaredDistance(sampleX, row.y);
            const float q1 = row.sides[1].SquaredDistance(sampleX, row.y);
            const float q2 = row.sides[2].SquaredDistance(sampleX, row.y);
            const float q01 = q0 < q1 ? q0 : q1;
            const float q = std::sqrt(q01 < q2 ? q01 : q2);
            const float tent = (kRimTop - std::abs(q - kRimTop)) / 30.0f;
            f = f - (tent > 0.0f ? tent : 0.0f) * u;
        }

        f = f > 0.0f ? f : 0.0f;
        f = f < 1.0f ? f : 1.0f;
        const float k = 1.0f - (3.0f - 2.0f * f) * f * f;
        const auto word = [=](float colour) {
            const float value = (colour * (1.0f - white) + peak * white) * k;
            const float above = value > -kFullSample ? value : -kFullSample;
            return static_cast<int>(above < kFullSample ? above : kFullSample);
        };
        run->red[at + i] = word(red);
        run->green[at + i] = word(green);
        run->blue[at + i] = word(blue);
    }
}

K7_WIDE_VECTORS void ShadePlain(const Row& row, int x, int count, int at, Run* run) {
    ShadeSamples<false>(row, x, count, at, run);
}
K7_WIDE_VECTORS void ShadeRim(const Row& row, int x, int count, int at, Run* run) {
    ShadeSamples<true>(row, x, count, at, run);
}

/// Shades samples first to last into a run that begins with sample `start`.
void ShadeRun(const Row& row, const Range& rim, int start, int first, int last, Run* run) {
    const int rimFirst = std::clamp(rim.first, first, last + 1);
    const int rimLast = std::clamp(rim.last, rimFirst - 1, last);
    if (first < rimFirst) ShadePlain(row, first, rimFirst - first, first - start, run);
    if (rimFirst <= rimLast) ShadeRim(row, rimFirst, rimLast - rimFirst + 1, rimFirst - start, run);
    if (rimLast < last) ShadePlain(row, rimLast + 1, last - rimLast, rimLast + 1 - start, run);
}

/// Adds two samples to each of `count` cells.
K7_WIDE_VECTORS void AddToCells(int* cells, int count, const int* samples) {
    for (int i = 0; i < count; ++i) {
        const int sum = cells[i] + kDrawings * (samples[2 * i] + samples[2 * i + 1]);
        cells[i] = std::clamp(sum, -kFullCell, kFullCell);
    }
}

} // namespace

void ShadeSpan(const GhostCanvas& canvas, const GhostTriangle& triangle, int y, float xa, float xb) {
    const int first = std::max(Trunc(std::ceil(xa - 0.5f)), canvas.LowX);
    const int last = std::min(Trunc(std::floor(xb - 0.5f)), canvas.HighX);
    if (first > last) return;
    const Row row(canvas, triangle, y);
    const Range rim = RimOf(row, canvas);

    const std::size_t cells = static_cast<std::size_t>(y / 2) * static_cast<std::size_t>(canvas.Width);
    Run run;
    for (int start = first & ~1; start <= last; start += kRun) {
        const int runFirst = std::max(first, start);
        const int runLast = std::min(last, start + kRun - 1);
        ShadeRun(row, rim, start, runFirst, runLast, &run);

        // The other halves of the first and the last cell do not belong to this span.
        const int count = (runLast - start) / 2 + 1;
        for (int* samples : {run.red, run.green, run.blue}) {
            if (runFirst > start) samples[0] = 0;
            if ((runLast - start) % 2 == 0) samples[2 * count - 1] = 0;
        }
        const std::size_t cell = cells + static_cast<std::size_t>(start / 2);
        AddToCells(canvas.Red + cell, count, run.red);
        AddToCells(canvas.Green + cell, count, run.green);
        AddToCells(canvas.Blue + cell, count, run.blue);
    }
}

} // namespace k7
