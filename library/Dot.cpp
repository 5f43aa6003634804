#include "library/Dot.h"

#include "baselib/Vector.h"

namespace k7 {

namespace {

K7_ALWAYS_INLINE std::int32_t Dot(const std::int16_t* words, const std::int16_t* weights,
                                  std::size_t blocks) {
    std::int32_t sum = 0;
    for (; blocks > 0; --blocks, words += kDotBlock, weights += kDotBlock)
        for (int i = 0; i < kDotBlock; ++i) sum += words[i] * weights[i];
    return sum;
}

/// Four at a time load each weight once.
K7_ALWAYS_INLINE void FourDots(const std::int16_t* words0, std::ptrdiff_t step, const std::int16_t* weights,
                               std::size_t blocks, std::int32_t* sums) {
    const std::int16_t* words1 = words0 + step;
    const std::int16_t* words2 = words1 + step;
    const std::int16_t* words3 = words2 + step;
    std::int32_t sum0 = 0, sum1 = 0, sum2 = 0, sum3 = 0;
    for (; blocks > 0; --blocks, weights += kDotBlock) {
        for (int i = 0; i < kDotBlock; ++i) {
            sum0 += words0[i] * weights[i];
            sum1 += words1[i] * weights[i];
            sum2 += words2[i] * weights[i];
            sum3 += words3[i] * weights[i];
        }
        words0 += kDotBlock;
        words1 += kDotBlock;
        words2 += kDotBlock;
        words3 += kDotBlock;
    }
    sums[0] = sum0;
    sums[1] = sum1;
    sums[2] = sum2;
    sums[3] = sum3;
}

} // namespace

K7_WIDE_VECTORS void Dots(const std::int16_t* words, std::ptrdiff_t step, const std::int16_t* weights,
                          std::size_t blocks, int count, std::int32_t* sums) {
    int i = 0;
    for (; i + 4 <= count; i += 4, words += 4 * step) FourDots(words, step, weights, blocks, sums + i);
    for (; i < count; ++i, words += step) sums[i] = Dot(words, weights, blocks);
}

} // namespace k7
