#pragma once

// For kernel files: pairs of signed 16-bit numbers in the widest registers of the level that they are
// compiled for. A lane is 32 bits, a pair or the sum of products; sums wrap.

#include <cstdint>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace k7::K7_LEVEL {
namespace {

#if defined(__AVX512VNNI__)

struct PairLanes {
    static constexpr int kCount = 16;

    static PairLanes Load(const std::int32_t* from) { return {_mm512_loadu_si512(from)}; }
    static PairLanes All(std::int32_t pair) { return {_mm512_set1_epi32(pair)}; }
    void Store(std::int32_t* to) const { _mm512_storeu_si512(to, lanes); }
    /// Adds both products of each pair.
    void AddProducts(PairLanes a, PairLanes b) { lanes = _mm512_dpwssd_epi32(lanes, a.lanes, b.lanes); }

    __m512i lanes;
};

#elif defined(__AVX2__)

struct PairLanes {
    static constexpr int kCount = 8;

    static PairLanes Load(const std::int32_t* from) {
        return {_mm256_loadu_si256(reinterpret_cast<const __m256i*>(from))};
    }
    static PairLanes All(std::int32_t pair) { return {_mm256_set1_epi32(pair)}; }
    void Store(std::int32_t* to) const { _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), lanes); }
    void AddProducts(PairLanes a, PairLanes b) {
        lanes = _mm256_add_epi32(lanes, _mm256_madd_epi16(a.lanes, b.lanes));
    }

    __m256i lanes;
};

#elif defined(__SSE2__)

struct PairLanes {
    static constexpr int kCount = 4;

    static PairLanes Load(const std::int32_t* from) {
        return {_mm_loadu_si128(reinterpret_cast<const __m128i*>(from))};
    }
    static PairLanes All(std::int32_t pair) { return {_mm_set1_epi32(pair)}; }
    void Store(std::int32_t* to) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(to), lanes); }
    void AddProducts(PairLanes a, PairLanes b) {
        lanes = _mm_add_epi32(lanes, _mm_madd_epi16(a.lanes, b.lanes));
    }

    __m128i lanes;
};

#else

struct PairLanes {
    static constexpr int kCount = 1;

    static PairLanes Load(const std::int32_t* from) { return {*from}; }
    static PairLanes All(std::int32_t pair) { return {pair}; }
    void Store(std::int32_t* to) const { *to = lane; }
    void AddProducts(PairLanes a, PairLanes b) {
        const auto low = [](std::int32_t pair) { return static_cast<std::int16_t>(pair & 0xffff); };
        const auto high = [](std::int32_t pair) { return static_cast<std::int16_t>(pair >> 16); };
        lane = static_cast<std::int32_t>(static_cast<std::uint32_t>(lane) +
                                         static_cast<std::uint32_t>(low(a.lane) * low(b.lane)) +
                                         static_cast<std::uint32_t>(high(a.lane) * high(b.lane)));
    }

    std::int32_t lane;
};

#endif

} // namespace
} // namespace k7::K7_LEVEL
