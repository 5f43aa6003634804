#pragma once

#include "library/K7Image.h"

#include <cstdint>
#include <type_traits>

namespace k7 {

/// What samples are summed in: words modulo 2^32.
template <class Sample>
using LineSumOf = std::conditional_t<SampleTraits<Sample>::kWords, std::uint32_t, double>;

/// Sums the pixels that Bresenham's line meets from pixel (x, y) on, on a grid of 1 << shift cells for a
/// pixel (shift 0 to 3), starting in the pixel's first cell. `wayX` and `wayY` are the line's length in
/// cells, below 2^32 each; it takes max(|wayX|, |wayY|) + 1 samples. Edge pixels repeat beyond the picture.
/// The time is bounded by the picture's sides, however long the line.
template <class Sample>
void SumAlongLine(const PictureK7<Sample>& image, int x, int y, std::int64_t wayX, std::int64_t wayY,
                  int shift, LineSumOf<Sample> sums[4]);

} // namespace k7
