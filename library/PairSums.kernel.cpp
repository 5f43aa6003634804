#include "library/PairSums.h"
#include "baselib/PairLanes.h"

namespace k7::K7_LEVEL {

/// Four registers of sums share each weight, and hide that a sum waits for the one before.
void AddPairs(const std::int32_t* pairs, std::ptrdiff_t step, const std::int32_t* weights, int count,
              int lanes, std::int32_t* sums) {
    constexpr int together = 4;
    for (int x = 0; x < lanes; x += together * PairLanes::kCount) {
        PairLanes sum[together];
        for (int i = 0; i < together; ++i) sum[i] = PairLanes::Load(sums + x + i * PairLanes::kCount);
        const std::int32_t* at = pairs + x;
        for (int k = 0; k < count; ++k, at += step) {
            const PairLanes weight = PairLanes::All(weights[k]);
            for (int i = 0; i < together; ++i)
                sum[i].AddProducts(PairLanes::Load(at + i * PairLanes::kCount), weight);
        }
        for (int i = 0; i < together; ++i) sum[i].Store(sums + x + i * PairLanes::kCount);
    }
}

namespace {

std::int32_t PairOf(int first, int second) {
    return static_cast<std::int32_t>((static_cast<std::uint32_t>(first) & 0xffffu) |
                                     static_cast<std::uint32_t>(second) << 16);
}

} // namespace

void FoldPairs(const std::int16_t* row, const std::int16_t* other, std::ptrdiff_t apart, int lanes,
               std::int32_t* pairs) {
    for (int i = 0; i < lanes; ++i) pairs[i] = PairOf(row[i] + other[i], row[i + apart] + other[i + apart]);
}

void JoinPairs(const std::int16_t* words, std::ptrdiff_t apart, int lanes, std::int32_t* pairs) {
    for (int i = 0; i < lanes; ++i) pairs[i] = PairOf(words[i], words[i + apart]);
}

} // namespace k7::K7_LEVEL
