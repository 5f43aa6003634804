#pragma once

#include <cstdint>
#include <limits>

namespace k7 {

using u16 = std::uint16_t;

/// Full scale of a picture word: words run from 0 to 32767.
inline constexpr int kFullScale = 32767;

/// Truncates toward zero; values outside the range of Int stop at its ends, NaN gives 0.
template <class Int, class Real>
constexpr Int Saturate(Real value) {
    constexpr Real low = static_cast<Real>(std::numeric_limits<Int>::min());
    constexpr Real high = static_cast<Real>(std::numeric_limits<Int>::max()); // may round up, never down
    if (!(value == value)) return 0;
    if (value <= low) return std::numeric_limits<Int>::min();
    if (value >= high) return std::numeric_limits<Int>::max();
    return static_cast<Int>(value);
}

/// Saturate to a signed 32-bit integer.
constexpr int Trunc(double value) {
    return Saturate<std::int32_t>(value);
}
constexpr int Trunc(float value) {
    return Saturate<std::int32_t>(value);
}

/// Brightness of a colour, 16 times its level.
template <class Number>
constexpr auto Brightness16(Number red, Number green, Number blue) {
    return 5 * red + 8 * green + 3 * blue;
}

/// Holds an integer within the range of a picture word.
constexpr u16 ClampWord(int value) {
    return static_cast<u16>(value < 0 ? 0 : value > kFullScale ? kFullScale : value);
}

} // namespace k7
