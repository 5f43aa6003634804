#pragma once

#include <cstddef>
#include <cstdint>

namespace k7 {

/// One level of a grey pyramid: Width x Height bytes, row by row.
struct GreyLevel {
    std::uint8_t* Row(int y) const { return Pixels + static_cast<std::ptrdiff_t>(y) * Width; }

    std::uint8_t* Pixels = nullptr;
    int Width = 0;
    int Height = 0;
};

/// A block reaches this far from its centre pixel, to each side.
inline constexpr int kBlockHalf = 8;

/// The search reaches this far from the guess, to each side.
inline constexpr int kSearchHalf = 8;

/// Full search for one block: takes the block around (blockX, blockY) from `previous`, clipped to the level,
/// and searches for it in `current` around (guessX, guessY). The least sum of absolute differences wins;
/// among equal ones the lowest row and then the lowest column. Pixels of a candidate outside the level add
/// nothing. The result is where the block's centre moved. Returns false, with the guess as the result, if the
/// block lies outside the level or no candidate touches it. Both levels have the same size.
bool MatchBlock(const GreyLevel& current, const GreyLevel& previous, int blockX, int blockY, int guessX,
                int guessY, int* resultX, int* resultY);

} // namespace k7
