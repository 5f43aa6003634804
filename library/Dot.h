#pragma once

#include <cstddef>
#include <cstdint>

namespace k7 {

/// Dot products run over whole blocks of this many values: so written, compilers turn them into the
/// multiply-and-add-pairs instruction for 16-bit integers, 8 or 16 products at a time.
inline constexpr int kDotBlock = 16;

constexpr std::size_t DotBlocks(std::size_t count) {
    return (count + kDotBlock - 1) / kDotBlock;
}

/// `count` sums of words times weights over `blocks` blocks, from words that begin `step` apart. No sum may
/// leave its type.
void Dots(const std::int16_t* words, std::ptrdiff_t step, const std::int16_t* weights, std::size_t blocks,
          int count, std::int32_t* sums);

} // namespace k7
