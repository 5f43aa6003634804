#include "frame/Overlay.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace k7 {

namespace {

/// The most strokes of one curve: a widget many pictures wide is drawn in coarser strokes.
constexpr float kMaxStrokes = 16384.0f;

constexpr float kBoxHalf = 4.0f; // display pixels
constexpr float kCrossInner = 10.0f;
constexpr float kCrossOuter = 25.0f;
constexpr float kArrowLength = 40.0f;
constexpr float kArrowDegrees = 20.0f;
constexpr float kLeastEllipse = 5.0f; // image pixels
constexpr float kCoarsestStep = 36.0f;

constexpr float kPi = std::numbers::pi_v<float>;
constexpr float kRadians = kPi / 180.0f;

struct Fractions {
    Fractions(const OverlayK7& view, float x, float y)
        : at{x / static_cast<float>(view.ImageWidth), y / static_cast<float>(view.ImageHeight)} {}
    float at[2];
};

} // namespace

void OverlayColour(const OverlayK7& view, int red, int green, int blue) {
    view.Surface->SetColour(red >> 8, green >> 8, blue >> 8);
}

void OverlayLine(const OverlayK7& view, float x1, float y1, float x2, float y2) {
    view.Surface->DrawSegment(Fractions(view, x1, y1).at, Fractions(view, x2, y2).at);
}

void OverlayBox(const OverlayK7& view, float x, float y) {
    const float half = kBoxHalf / view.Zoom;
    const float corners[4][2] = {{-half, -half}, {half, -half}, {half, half}, {-half, half}};
    float points[4][2];
    for (int i = 0; i < 4; ++i) {
        const Fractions corner(view, x + corners[i][0], y + corners[i][1]);
        points[i][0] = corner.at[0];
        points[i][1] = corner.at[1];
    }
    view.Surface->DrawLoop(points, 4);
}

void OverlayDashedLine(const OverlayK7& view, float x1, float y1, float x2, float y2, int dash) {
    const float pieces = OverlayDistance(x2 - x1, y2 - y1) / static_cast<float>(dash);
    if (!(pieces > 0.0f) || std::isinf(pieces)) return;
    const float n = std::min(pieces, kMaxStrokes);
    const float stepX = (x2 - x1) / n;
    const float stepY = (y2 - y1) / n;

    float x = x1;
    float y = y1;
    for (int i = 0; static_cast<float>(i) < n; ++i) {
        const bool last = static_cast<float>(i + 1) >= n; // would step beyond the end
        const float nextX = last ? x2 : x + stepX;
        const float nextY = last ? y2 : y + stepY;
        if (i % 2 == 1) OverlayLine(view, x, y, nextX, nextY);
        x = nextX;
        y = nextY;
    }
}

void OverlayEllipse(const OverlayK7& view, float cx, float cy, float width, float height, float rotation,
                    bool dashed, int step, float start, float end) {
    if (!(width >= kLeastEllipse && height >= kLeastEllipse)) return;
    const float strokes = std::min(width * kPi / static_cast<float>(step), kMaxStrokes);
    const float degrees = std::min(360.0f / strokes, kCoarsestStep);
    const float c = std::cos(rotation * kRadians);
    const float s = std::sin(rotation * kRadians);

    float previousX = 0.0f;
    float previousY = 0.0f;
    auto joinTo = [&](float angle, bool draw) {
        const float u = width / 2.0f * std::cos(angle * kRadians);
        const float v = height / 2.0f * std::sin(angle * kRadians);
        const float x = cx + u * c - v * s;
        const float y = cy + u * s + v * c;
        if (draw) OverlayLine(view, previousX, previousY, x, y);
        previousX = x;
        previousY = y;
    };

    int count = 0;
    for (float angle = start; angle <= end; angle += degrees, ++count)
        joinTo(angle, count > 0 && (!dashed || count % 2 == 1));
    if (start == 0.0f && end == 360.0f) joinTo(0.0f, true);
}

void OverlayCross(const OverlayK7& view, float x, float y, bool diagonals) {
    auto stroke = [&](float directionX, float directionY, float inner, float outer) {
        OverlayLine(view, x + directionX * inner, y + directionY * inner, x + directionX * outer,
                    y + directionY * outer);
    };
    const float inner = kCrossInner / view.Zoom;
    const float outer = kCrossOuter / view.Zoom;
    stroke(-1.0f, 0.0f, inner, outer);
    stroke(1.0f, 0.0f, inner, outer);
    stroke(0.0f, 1.0f, inner, outer);
    stroke(0.0f, -1.0f, inner, outer);
    if (!diagonals) return;
    for (float directionX : {-1.0f, 1.0f})
        for (float directionY : {-1.0f, 1.0f}) stroke(directionX, directionY, inner / 2.0f, outer / 2.0f);
}

void OverlayArrow(const OverlayK7& view, float x1, float y1, float x2, float y2) {
    const float length = kArrowLength / view.Zoom;
    const float direction = std::atan2(y2 - y1, x2 - x1);
    for (float side : {-1.0f, 1.0f}) {
        const float angle = direction + side * kArrowDegrees * kRadians;
        OverlayLine(view, x1, y1, x1 + length * std::cos(angle), y1 + length * std::sin(angle));
    }
}

} // namespace k7
