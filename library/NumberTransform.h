#pragma once

#include <cstddef>
#include <cstdint>

namespace k7 {

/// Arithmetic modulo 2^64 - 2^32 + 1, a prime: here a Fourier transform of whole numbers is exact. A number
/// is from 0 to the prime less 1.
using FieldNumber = std::uint64_t;

FieldNumber FieldMultiply(FieldNumber a, FieldNumber b);

inline constexpr std::size_t kLongestTransform = std::size_t{1} << 32;

/// The transform of `length` numbers in place, in an order of its own. `length` is a power of two up to
/// kLongestTransform.
void ForwardTransform(FieldNumber* values, std::size_t length);

/// Its reverse, from that order, times `length`.
void BackwardTransform(FieldNumber* values, std::size_t length);

/// 1 / length, for a power of two up to kLongestTransform.
FieldNumber FieldInverse(std::size_t length);

} // namespace k7
