#pragma once

#include "baselib/VectorLevel.h"

#include <cstddef>
#include <cstdint>

namespace k7 {

/// Room that a row of columns needs behind its last key, for whole registers.
inline constexpr int kSpareKeys = 64;

// Medians of windows of `side` x `side` pixels, `side` from 2 to 5, over rows 0 to side - 1 and over rows 1
// to side, of `width` pixels of four channels each: one pixel for each of the width - side + 1 windows into
// both rows of `to`. `columns` is a work space of `side` rows of `room` keys.

using WindowsOfWords = void(int side, const std::uint16_t* const* rows, int width, std::int16_t* columns,
                            std::size_t room, std::uint16_t* const* to);
using WindowsOfFloats = void(int side, const float* const* rows, int width, std::int32_t* columns,
                             std::size_t room, float* const* to);

#define K7_DECLARE_LEVEL(level)                                                                              \
    namespace level {                                                                                        \
    WindowsOfWords FilterWords;                                                                              \
    WindowsOfFloats FilterFloats;                                                                            \
    }
K7_DECLARE_LEVEL(baseline)
K7_DECLARE_LEVEL(avx2)
K7_DECLARE_LEVEL(avx512)
#undef K7_DECLARE_LEVEL

inline constexpr PerLevel<WindowsOfWords> kWindowsOfWords = {baseline::FilterWords, avx2::FilterWords,
                                                             avx512::FilterWords};
inline constexpr PerLevel<WindowsOfFloats> kWindowsOfFloats = {baseline::FilterFloats, avx2::FilterFloats,
                                                               avx512::FilterFloats};

} // namespace k7
