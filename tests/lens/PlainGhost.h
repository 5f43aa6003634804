#pragma once

#include "lens/GhostShade.h"
#include "library/Numbers.h"

#include <algorithm>
#include <cmath>

namespace k7::test {

// The shading of a ghost's samples by definition, one sample at a time.

inline float PlainDistance(const GhostPoint& a, const GhostPoint& b, float x, float y) {
    const float dx = b.X - a.X;
    const float dy = b.Y - a.Y;
    const float squared = dx * dx + dy * dy;
    float t = 0.0f;
    if (squared >= 1e-5f) t = std::clamp(((x - a.X) * dx + (y - a.Y) * dy) / squared, 0.0f, 1.0f);
    const float ex = x - (a.X + t * dx);
    const float ey = y - (a.Y + t * dy);
    return std::sqrt(ex * ex + ey * ey);
}

inline void PlainSample(const GhostCanvas& canvas, const GhostTriangle& triangle, int x, int y) {
    const GhostLight& light = *triangle.Light;
    const float fx = static_cast<float>(x);
    const float fy = static_cast<float>(y);
    const float py = (fy - light.CentreY) / canvas.AspectX;
    const float px = (fx - light.CentreX) / canvas.AspectY;
    const float r = std::sqrt(px * px + py * py);
    const float beyond = r * light.Falloff - light.InnerRadius;
    const float range = light.OuterRadius - light.InnerRadius;
    float f = beyond / range;
    if (range == 0.0f) f = beyond > 0.0f ? 1.0f : 0.0f;

    float u = 0.0f;
    float white = 1.0f;
    if (r > 0.0f) {
        u = std::max(0.0f, px / r * light.DirX + py / r * light.DirY);
        white = std::min(1.0f, 2.0f * u * u);
    }
    if (light.EdgeBoost) {
        const GhostPoint* v = triangle.Vertices;
        const float q =
            std::min({PlainDistance(v[1], v[2], fx, fy), PlainDistance(triangle.Next, v[2], fx, fy),
                      PlainDistance(v[1], triangle.Previous, fx, fy)});
        f = f - std::max(0.0f, (10.0f - std::abs(q - 10.0f)) / 30.0f) * u;
    }
    f = std::clamp(f, 0.0f, 1.0f);
    const float k = 1.0f - (3.0f - 2.0f * f) * f * f;

    const int width = canvas.Width;
    const auto add = [&](int* plane, int colour) {
        const float value =
            static_cast<float>(colour) * (1.0f - white) + static_cast<float>(light.Peak) * white;
        for (int drawing = 0; drawing < 3; ++drawing) plane[y / 2 * width + x / 2] += Trunc(value * k);
    };
    add(canvas.Red, light.Red);
    add(canvas.Green, light.Green);
    add(canvas.Blue, light.Blue);
}

inline void PlainSpan(const GhostCanvas& canvas, const GhostTriangle& triangle, int y, float xa, float xb) {
    const int first = std::max(Trunc(std::ceil(xa - 0.5f)), canvas.LowX);
    const int last = std::min(Trunc(std::floor(xb - 0.5f)), canvas.HighX);
    for (int x = first; x <= last; ++x) PlainSample(canvas, triangle, x, y);
}

} // namespace k7::test
