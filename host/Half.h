#pragma once

#include <bit>
#include <cstdint>

namespace host {

// Half floats (IEEE 754 binary16) to and from floats without a branch, so that whole rows go through vector
// registers. NaNs keep their sign and the upper bits of their payload. Rounding is to the nearest, ties to
// even, as with the processor's own instruction.

/// `yes` where the condition holds, otherwise `no`, by masks: compilers turn the operator back into a branch.
inline std::uint32_t Choose(bool condition, std::uint32_t yes, std::uint32_t no) {
    const std::uint32_t mask = 0u - static_cast<std::uint32_t>(condition);
    return (yes & mask) | (no & ~mask);
}

inline float FromHalf(std::uint16_t half) {
    // The exponent moves from a bias of 15 to one of 127. Below the normal range the numbers are those above
    // 2^-14, less 2^-14; infinities and NaNs get all bits of the exponent.
    const std::uint32_t magnitude = static_cast<std::uint32_t>(half & 0x7fff) << 13;
    const std::uint32_t moved = magnitude + 0x38000000u;
    const auto small = std::bit_cast<std::uint32_t>(std::bit_cast<float>(moved + 0x00800000u) - 0x1p-14f);
    std::uint32_t bits = Choose(magnitude < 0x00800000u, small, moved);
    bits += 0x38000000u & (0u - static_cast<std::uint32_t>(magnitude >= 0x0f800000u));
    return std::bit_cast<float>(bits | static_cast<std::uint32_t>(half & 0x8000) << 16);
}

inline std::uint16_t ToHalf(float value) {
    const std::uint32_t signedBits = std::bit_cast<std::uint32_t>(value);
    const std::uint32_t bits = signedBits & 0x7fffffffu;
    const std::uint32_t normal = (bits + 0xc8000fffu + (bits >> 13 & 1u)) >> 13; // the new bias, rounded
    const std::uint32_t small = std::bit_cast<std::uint32_t>(std::bit_cast<float>(bits) + 0.5f) - 0x3f000000u;
    const std::uint32_t payload = bits >> 13 & 0x3ffu;
    const std::uint32_t nan = 0x7c00u | payload | static_cast<std::uint32_t>(payload == 0);
    std::uint32_t half = Choose(bits < 0x38800000u, small, normal); // below 2^-14 adding 0.5 rounds
    half = Choose(bits >= 0x47800000u, 0x7c00u, half);              // from 65536 on
    half = Choose(bits > 0x7f800000u, nan, half);
    return static_cast<std::uint16_t>(half | (signedBits >> 16 & 0x8000u));
}

} // namespace host
