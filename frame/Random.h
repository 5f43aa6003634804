#pragma once

#include <array>
#include <cstdint>

namespace k7 {

/// The linear congruential generator of the common C runtime libraries: advances the caller's state and
/// returns its bits 16 to 30, a value from 0 to 32767.
constexpr int Rand15(std::uint32_t* state) {
    *state = *state * 214013u + 2531011u;
    return static_cast<int>(*state >> 16 & 0x7fffu);
}

/// The state after `draws` more draws (F. B. Brown, Random number generation with arbitrary strides, 1994).
constexpr std::uint32_t SkipRand15(std::uint32_t state, std::uint64_t draws) {
    std::uint32_t multiplier = 214013u, increment = 2531011u;
    for (; draws > 0; draws >>= 1) {
        if (draws & 1) state = state * multiplier + increment;
        increment *= multiplier + 1u;
        multiplier *= multiplier;
    }
    return state;
}

/// ran1 of Numerical Recipes (Press et al., 2nd edition, 7.1): the minimal standard of Park and Miller with a
/// Bays-Durham shuffle. The object is the whole generator; a copy goes on with the same sequence.
class Ran1 {
public:
    /// Starts the sequence of a seed at the next draw; seeds 0 and 1 have the same sequence.
    void Seed(std::int32_t seed) { state_ = seed > 0 ? -seed : seed; }

    /// A 32-bit float above 0 and at most 0.99999988.
    float operator()();

    bool operator==(const Ran1&) const = default;

private:
    std::int32_t state_ = 0;
    std::int32_t previous_ = 0;
    std::array<std::int32_t, 32> table_{};
};

} // namespace k7
