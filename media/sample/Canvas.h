#pragma once

#include "media/sample/Paint.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace media::sample {

inline constexpr int kWidth = 960;
inline constexpr int kHeight = 540;

/// A picture of light, rows bottom up.
using Canvas = std::vector<Light>;

/// Where the wet street ends and the pavement before the houses begins.
inline constexpr int kKerb = 150;

/// Calls `paint(x, y, light)`, which changes the light of a pixel, for each pixel within a box.
template <class Paint>
void Over(Canvas& canvas, int left, int bottom, int right, int top, Paint paint) {
    for (int y = std::max(bottom, 0); y < std::min(top, kHeight); ++y)
        for (int x = std::max(left, 0); x < std::min(right, kWidth); ++x)
            paint(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f,
                  canvas[static_cast<std::size_t>(y) * kWidth + static_cast<std::size_t>(x)]);
}

} // namespace media::sample
