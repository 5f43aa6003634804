#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

/// Small brushes of the sample clip. Everything is made of +, -, *, / and square roots of 32-bit floats,
/// which IEEE 754 rounds exactly, so a frame has the same words on every machine.
namespace media::sample {

/// Linear light; 1 is the white of the picture, lamps go far above it.
struct Light {
    float r = 0, g = 0, b = 0;

    Light operator+(Light o) const { return {r + o.r, g + o.g, b + o.b}; }
    Light operator*(Light o) const { return {r * o.r, g * o.g, b * o.b}; }
    Light operator*(float s) const { return {r * s, g * s, b * s}; }
    Light& operator+=(Light o) { return *this = *this + o; }
};

inline Light Mix(Light a, Light b, float t) {
    return a * (1.0f - t) + b * t;
}

/// A display colour, 0xRRGGBB, converted to linear light (the clip's gamma is 2).
constexpr Light Rgb(std::uint32_t hex) {
    const float r = static_cast<float>(hex >> 16 & 255) / 255.0f;
    const float g = static_cast<float>(hex >> 8 & 255) / 255.0f;
    const float b = static_cast<float>(hex & 255) / 255.0f;
    return {r * r, g * g, b * b};
}

/// 32 well mixed bits for a place; different seeds produce unrelated fields.
inline std::uint32_t Hash(int x, int y, std::uint32_t seed) {
    std::uint32_t h = static_cast<std::uint32_t>(x) * 0x9e3779b1u ^
                      static_cast<std::uint32_t>(y) * 0x85ebca77u ^ seed * 0xc2b2ae3du;
    h = (h ^ h >> 15) * 0x2c1b3c6du;
    h = (h ^ h >> 12) * 0x297a2d39u;
    return h ^ h >> 15;
}

/// The same as a number from 0 up to, but not including, 1.
inline float Random(int x, int y, std::uint32_t seed) {
    return static_cast<float>(Hash(x, y, seed) >> 8) * (1.0f / 16777216.0f);
}

/// 0 up to `from`, 1 from `to` on, and a smooth cubic between.
inline float Ramp(float from, float to, float x) {
    const float t = std::clamp((x - from) / (to - from), 0.0f, 1.0f);
    return t * t * (3.0f - 2.0f * t);
}

/// Smooth random hills, one to a unit square.
inline float Noise(float x, float y, std::uint32_t seed) {
    const float fx = std::floor(x), fy = std::floor(y);
    const int ix = static_cast<int>(fx), iy = static_cast<int>(fy);
    const float u = Ramp(0, 1, x - fx), v = Ramp(0, 1, y - fy);
    const float low = Random(ix, iy, seed) * (1 - u) + Random(ix + 1, iy, seed) * u;
    const float high = Random(ix, iy + 1, seed) * (1 - u) + Random(ix + 1, iy + 1, seed) * u;
    return low * (1 - v) + high * v;
}

/// Noise upon noise of half the size and half the height, `octaves` times; about 0 to 1.
inline float Clouds(float x, float y, int octaves, std::uint32_t seed) {
    float sum = 0, height = 0.5f;
    for (int i = 0; i < octaves; ++i, x *= 2, y *= 2, height *= 0.5f)
        sum += height * Noise(x, y, seed + static_cast<std::uint32_t>(i));
    return sum;
}

/// How much of a pixel lies inside an edge `distance` pixels away; negative distances are inside.
inline float Cover(float distance) {
    return std::clamp(0.5f - distance, 0.0f, 1.0f);
}

/// Signed distances from (x, y) to a few shapes.
inline float Circle(float x, float y, float cx, float cy, float radius) {
    return std::sqrt((x - cx) * (x - cx) + (y - cy) * (y - cy)) - radius;
}
inline float Box(float x, float y, float left, float bottom, float right, float top, float corner = 0) {
    const float halfX = (right - left) / 2 - corner, halfY = (top - bottom) / 2 - corner;
    const float dx = std::fabs(x - (left + right) / 2) - halfX;
    const float dy = std::fabs(y - (bottom + top) / 2) - halfY;
    const float ox = std::max(dx, 0.0f), oy = std::max(dy, 0.0f);
    return std::sqrt(ox * ox + oy * oy) + std::min(std::max(dx, dy), 0.0f) - corner;
}
inline float Segment(float x, float y, float ax, float ay, float bx, float by) {
    const float ux = bx - ax, uy = by - ay;
    const float t = std::clamp(((x - ax) * ux + (y - ay) * uy) / (ux * ux + uy * uy), 0.0f, 1.0f);
    return Circle(x, y, ax + t * ux, ay + t * uy, 0);
}

/// A glow that is 1 at its centre, one quarter at `radius`, and falls off like light in mist.
inline float Glow(float distance, float radius) {
    const float q = distance / radius;
    return 1.0f / ((1.0f + q * q) * (1.0f + q * q));
}

} // namespace media::sample
