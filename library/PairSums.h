#pragma once

#include "baselib/VectorLevel.h"

#include <cstddef>
#include <cstdint>

namespace k7 {

// Sums of 16-bit words times weights, two places at a time. A result has a lane of its own, so that no sum is
// taken across a register. Sums wrap at 32 bits.

/// A result row is worked on in pieces of this many lanes; sums have room for whole ones, and pairs are read
/// as far.
inline constexpr int kPairTile = 64;

/// Adds weights to the sums of `lanes` results: sums[i] grows by both products of pairs[i + k x step] and
/// weights[k], for k below `count`.
using AddPairSums = void(const std::int32_t* pairs, std::ptrdiff_t step, const std::int32_t* weights,
                         int count, int lanes, std::int32_t* sums);

/// Makes pairs of the sums of two rows, a lane and the one `apart` lanes behind it. The sums fit 16 bits.
using FoldToPairs = void(const std::int16_t* row, const std::int16_t* other, std::ptrdiff_t apart, int lanes,
                         std::int32_t* pairs);

/// Makes pairs of a lane and the one `apart` lanes behind it.
using JoinToPairs = void(const std::int16_t* words, std::ptrdiff_t apart, int lanes, std::int32_t* pairs);

#define K7_DECLARE_LEVEL(level)                                                                              \
    namespace level {                                                                                        \
    AddPairSums AddPairs;                                                                                    \
    FoldToPairs FoldPairs;                                                                                   \
    JoinToPairs JoinPairs;                                                                                   \
    }
K7_DECLARE_LEVEL(baseline)
K7_DECLARE_LEVEL(avx2)
K7_DECLARE_LEVEL(avx512)
#undef K7_DECLARE_LEVEL

inline constexpr PerLevel<AddPairSums> kAddPairs = {baseline::AddPairs, avx2::AddPairs, avx512::AddPairs};
inline constexpr PerLevel<FoldToPairs> kFoldPairs = {baseline::FoldPairs, avx2::FoldPairs, avx512::FoldPairs};
inline constexpr PerLevel<JoinToPairs> kJoinPairs = {baseline::JoinPairs, avx2::JoinPairs, avx512::JoinPairs};

} // namespace k7
