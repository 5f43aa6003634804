#pragma once

#include "frame/Controls.h"
#include "frame/PluginK7.h"
#include "tests/support/Pictures.h"

#include <cmath>

namespace k7::test {

/// A core without an effect, for what only needs threads.
struct EmptyCore : PluginK7 {
    ImageOutputK7 Output;
};

/// Soft structure of a few sizes, so that blocks have something to match.
inline Picture Blobs(int width, int height, int seed) {
    return MakePicture(width, height, [&](int x, int y, int c) {
        const double u = x + 31.0 * seed, v = y + 17.0 * seed;
        const double wave = std::sin(u * 0.21 + std::cos(v * 0.13) * 2.0) + std::sin(v * 0.17 - u * 0.05) +
                            0.6 * std::sin(u * 0.6) * std::cos(v * 0.55);
        return static_cast<int>(16000.0 + 5500.0 * wave) + 300 * c;
    });
}

/// The part of a picture that begins at (left, bottom).
inline Picture Window(const K7Image& picture, int left, int bottom, int width, int height) {
    return MakePicture(width, height,
                       [&](int x, int y, int c) { return picture.Rows[bottom + y][4 * (left + x) + c]; });
}

/// The left three quarters of one picture, the rest of another.
inline Picture Mixed(const K7Image& left, const K7Image& right) {
    return MakePicture(left.Width, left.Height, [&](int x, int y, int c) {
        return (4 * x < 3 * left.Width ? left : right).Rows[y][4 * x + c];
    });
}

/// A square with texture on plain black.
inline Picture TexturedSquare(int width, int height, int left, int bottom, int side) {
    const Picture texture = Blobs(side, side, 11);
    return MakePicture(width, height, [&](int x, int y, int c) {
        const bool inside = x >= left && x < left + side && y >= bottom && y < bottom + side;
        return inside ? texture->Rows[y - bottom][4 * (x - left) + c] : c == 3 ? 32767 : 0;
    });
}

} // namespace k7::test
