#include "library/NumberTransform.h"

#include "library/Chunks.h"

#include <array>
#include <bit>

namespace k7 {

namespace {

constexpr FieldNumber kPrime = 0xFFFFFFFF00000001u;
constexpr FieldNumber kWrap = 0xFFFFFFFFu; ///< 2^64 modulo the prime
constexpr int kMostDoublings = 32;         ///< the prime less 1 is a multiple of 2^32

/// `value` if a condition holds, otherwise 0, without a branch: on such numbers every second one is
/// mispredicted.
constexpr FieldNumber If(bool condition, FieldNumber value) {
    return (0 - static_cast<FieldNumber>(condition)) & value;
}

constexpr FieldNumber Subtract(FieldNumber a, FieldNumber b) {
    return a - b - If(a < b, kWrap);
}

constexpr FieldNumber Add(FieldNumber a, FieldNumber b) {
    return Subtract(a, kPrime - b);
}

/// With the product as h 2^96 + m 2^64 + l: 2^96 is -1 and 2^64 is 2^32 - 1 modulo the prime.
constexpr FieldNumber Multiply(FieldNumber a, FieldNumber b) {
    const unsigned __int128 product = static_cast<unsigned __int128>(a) * b;
    const auto low = static_cast<FieldNumber>(product);
    const auto high = static_cast<FieldNumber>(product >> 64);
    const FieldNumber part = Subtract(low, high >> 32); // below 2^64, not always below the prime
    const FieldNumber middle = (high & kWrap) * kWrap;
    const FieldNumber sum = part + middle;
    const FieldNumber held = sum + If(sum < middle, kWrap);
    return held - If(held >= kPrime, kPrime);
}

constexpr FieldNumber Power(FieldNumber base, FieldNumber exponent) {
    FieldNumber result = 1;
    for (; exponent > 0; exponent >>= 1, base = Multiply(base, base))
        if (exponent & 1) result = Multiply(result, base);
    return result;
}

/// Element k is a root of unity of order 2^k, from a generator of the field.
constexpr std::array<FieldNumber, kMostDoublings + 1> RootsFrom(FieldNumber generator) {
    std::array<FieldNumber, kMostDoublings + 1> roots{};
    for (std::size_t k = 0; k < roots.size(); ++k) roots[k] = Power(generator, (kPrime - 1) >> k);
    return roots;
}
constexpr auto kRoots = RootsFrom(7);
constexpr auto kInverseRoots = RootsFrom(Power(7, kPrime - 2));

FieldNumber RootFor(const std::array<FieldNumber, kMostDoublings + 1>& roots, std::size_t length) {
    return roots[static_cast<std::size_t>(std::countr_zero(length))];
}

/// Whether the frame is aborted; short transforms are over before it is worth asking.
bool IsStopped(std::size_t length) {
    constexpr std::size_t kWorthAsking = std::size_t{1} << 12;
    return length >= kWorthAsking && AbortRequested();
}

} // namespace

FieldNumber FieldMultiply(FieldNumber a, FieldNumber b) {
    return Multiply(a, b);
}

FieldNumber FieldInverse(std::size_t length) {
    return Power(length, kPrime - 2);
}

// Both halve the length in turn (Gentleman and Sande, Cooley and Tukey), each half to its end, so that all
// but the longest lengths are worked on in the cache.

void ForwardTransform(FieldNumber* values, std::size_t length) {
    if (length < 2 || IsStopped(length)) return;
    const std::size_t half = length / 2;
    const FieldNumber root = RootFor(kRoots, length);
    FieldNumber turn = 1;
    for (std::size_t i = 0; i < half; ++i, turn = Multiply(turn, root)) {
        const FieldNumber a = values[i];
        const FieldNumber b = values[i + half];
        values[i] = Add(a, b);
        values[i + half] = Multiply(Subtract(a, b), turn);
    }
    ForwardTransform(values, half);
    ForwardTransform(values + half, half);
}

void BackwardTransform(FieldNumber* values, std::size_t length) {
    if (length < 2 || IsStopped(length)) return;
    const std::size_t half = length / 2;
    BackwardTransform(values, half);
    BackwardTransform(values + half, half);
    const FieldNumber root = RootFor(kInverseRoots, length);
    FieldNumber turn = 1;
    for (std::size_t i = 0; i < half; ++i, turn = Multiply(turn, root)) {
        const FieldNumber a = values[i];
        const FieldNumber b = Multiply(values[i + half], turn);
        values[i] = Add(a, b);
        values[i + half] = Subtract(a, b);
    }
}

} // namespace k7
