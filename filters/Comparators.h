#pragma once

#include "baselib/VectorLevel.h"

#include <cstdint>

namespace k7 {

// Sorting networks on wires of many lanes: each lane is a network of its own, so that one comparator orders
// a whole register of neighbours without a branch.

inline constexpr int kWireBytes = 64;
inline constexpr int kWordLanes = kWireBytes / 2;  ///< a wire of 16-bit keys
inline constexpr int kFloatLanes = kWireBytes / 4; ///< a wire of 32-bit keys

/// Where its two wires lie, in bytes from the first; the lower key comes to `low`.
struct Comparator {
    std::uint32_t low, high;
};

/// How many comparators follow of which both wires are read again, then those with the lower key alone, and
/// with the higher alone.
struct ComparatorStep {
    std::uint32_t both, lowOnly, highOnly;
};

/// Wires are given in bytes from the first.
struct ComparatorList {
    const std::uint32_t* copied; ///< wires that no first comparator takes from the sources
    int copiedCount;
    const Comparator* comparators;
    int firstCount; ///< of comparators that meet both of their wires before all others
    const ComparatorStep* steps;
    int stepCount;
    const std::uint32_t* results;
    int resultCount;
};

/// Runs a network on the keys `from[i]` of each wire i and writes result i to `to[i]`. Sources and targets
/// hold a wire's keys and need no alignment; `wires` is a work space for all wires.
using CompareWords = void(const ComparatorList& list, const std::int16_t* const* from, std::int16_t* wires,
                          std::int16_t* const* to);
using CompareFloats = void(const ComparatorList& list, const std::int32_t* const* from, std::int32_t* wires,
                           std::int32_t* const* to);

#define K7_DECLARE_LEVEL(level)                                                                              \
    namespace level {                                                                                        \
    CompareWords RunOnWords;                                                                                 \
    CompareFloats RunOnFloats;                                                                               \
    }
K7_DECLARE_LEVEL(baseline)
K7_DECLARE_LEVEL(avx2)
K7_DECLARE_LEVEL(avx512)
#undef K7_DECLARE_LEVEL

inline constexpr PerLevel<CompareWords> kRunOnWords = {baseline::RunOnWords, avx2::RunOnWords,
                                                       avx512::RunOnWords};
inline constexpr PerLevel<CompareFloats> kRunOnFloats = {baseline::RunOnFloats, avx2::RunOnFloats,
                                                         avx512::RunOnFloats};

} // namespace k7
