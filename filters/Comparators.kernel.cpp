#include "filters/Comparators.h"

#include <cstring>

namespace k7::K7_LEVEL {

namespace {

#if defined(__AVX512BW__)
constexpr int kRegisterBytes = 64;
#elif defined(__AVX2__)
constexpr int kRegisterBytes = 32;
#else
constexpr int kRegisterBytes = 16;
#endif

typedef std::int16_t WordLanes __attribute__((vector_size(kRegisterBytes)));
typedef std::int32_t FloatLanes __attribute__((vector_size(kRegisterBytes)));

template <class Lanes>
Lanes Load(const void* from) {
    Lanes lanes;
    std::memcpy(&lanes, from, sizeof lanes);
    return lanes;
}

template <class Lanes>
void Store(const Lanes& lanes, void* to) {
    std::memcpy(to, &lanes, sizeof lanes);
}

/// Orders two wires register by register; what is not read again is not written.
template <class Lanes, bool withLow = true, bool withHigh = true>
void Compare(const char* a, const char* b, char* low, char* high) {
    for (int at = 0; at < kWireBytes; at += kRegisterBytes) {
        const auto first = Load<Lanes>(a + at), second = Load<Lanes>(b + at);
        if constexpr (withLow) Store<Lanes>(first < second ? first : second, low + at);
        if constexpr (withHigh) Store<Lanes>(first < second ? second : first, high + at);
    }
}

/// A comparator costs two loads and two stores beside its two comparisons, so that the store port sets the
/// pace; comparators of one step are independent and hide each other's latency. Those that meet their wires
/// first take them from the sources, which saves the copy.
template <class Lanes, class Key>
void Run(const ComparatorList& network, const Key* const* from, Key* wires, Key* const* to) {
    const ComparatorList list = network; // no store can change it
    char* const base = reinterpret_cast<char*>(wires);
    const auto source = [from](std::uint32_t wire) {
        return reinterpret_cast<const char*>(from[wire / kWireBytes]);
    };
    for (int i = 0; i < list.copiedCount; ++i)
        std::memcpy(base + list.copied[i], source(list.copied[i]), kWireBytes);

    const Comparator* at = list.comparators;
    for (const Comparator* const end = at + list.firstCount; at < end; ++at)
        Compare<Lanes>(source(at->low), source(at->high), base + at->low, base + at->high);
    for (const ComparatorStep* step = list.steps; step < list.steps + list.stepCount; ++step) {
        const Comparator* end = at + step->both;
        for (; at < end; ++at)
            Compare<Lanes>(base + at->low, base + at->high, base + at->low, base + at->high);
        for (end += step->lowOnly; at < end; ++at)
            Compare<Lanes, true, false>(base + at->low, base + at->high, base + at->low, nullptr);
        for (end += step->highOnly; at < end; ++at)
            Compare<Lanes, false, true>(base + at->low, base + at->high, nullptr, base + at->high);
    }

    for (int i = 0; i < list.resultCount; ++i) std::memcpy(to[i], base + list.results[i], kWireBytes);
}

} // namespace

void RunOnWords(const ComparatorList& list, const std::int16_t* const* from, std::int16_t* wires,
                std::int16_t* const* to) {
    Run<WordLanes>(list, from, wires, to);
}

void RunOnFloats(const ComparatorList& list, const std::int32_t* const* from, std::int32_t* wires,
                 std::int32_t* const* to) {
    Run<FloatLanes>(list, from, wires, to);
}

} // namespace k7::K7_LEVEL
