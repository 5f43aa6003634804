#include "filters/WindowMedians.h"

#include <cstring>
#include <utility>

namespace k7::K7_LEVEL {

namespace {

constexpr int kChannels = 4;

#if defined(__AVX512BW__)
constexpr int kRegisterBytes = 64;
#elif defined(__AVX2__)
constexpr int kRegisterBytes = 32;
#else
constexpr int kRegisterBytes = 16;
#endif

template <class Key>
struct Vectors {
    typedef Key Vector __attribute__((vector_size(kRegisterBytes)));
    static constexpr int kLanes = kRegisterBytes / sizeof(Key);
};

// Words are below 32768: their order is that of signed integers, for which all processors have minimum and
// maximum. Of a negative float all bits but the sign are turned round.

template <class Vector>
[[gnu::always_inline]] inline void Load(const std::uint16_t* samples, Vector& keys) {
    std::memcpy(&keys, samples, sizeof keys);
}
template <class Vector>
[[gnu::always_inline]] inline void Load(const float* samples, Vector& keys) {
    std::memcpy(&keys, samples, sizeof keys);
    keys ^= keys >> 31 & 0x7fffffff;
}
template <class Vector>
[[gnu::always_inline]] inline void Store(const Vector& keys, std::uint16_t* samples) {
    std::memcpy(samples, &keys, sizeof keys);
}
template <class Vector>
[[gnu::always_inline]] inline void Store(const Vector& keys, float* samples) {
    const Vector bits = keys ^ (keys >> 31 & 0x7fffffff);
    std::memcpy(samples, &bits, sizeof bits);
}

template <class Vector>
[[gnu::always_inline]] inline void Order(Vector& a, Vector& b) {
    const Vector low = a < b ? a : b;
    b = a < b ? b : a;
    a = low;
}

/// Sorts `count` vectors lane by lane, by insertion.
template <int count, class Vector>
[[gnu::always_inline]] inline void Sort(Vector* v) {
#pragma GCC unroll 8
    for (int end = 1; end < count; ++end)
#pragma GCC unroll 8
        for (int i = end; i > 0; --i) Order(v[i - 1], v[i]);
}

/// Merges two sorted runs that lie at the even and at the odd places (Knuth, The Art of Computer Programming
/// 3, 5.2.2, Algorithm M, its last round).
template <int count, class Vector>
[[gnu::always_inline]] inline void MergeInterleaved(Vector* v) {
#pragma GCC unroll 16
    for (int i = 0; i + 1 < count; i += 2) Order(v[i], v[i + 1]);
#pragma GCC unroll 8
    for (int q = 16; q > 1; q /= 2)
#pragma GCC unroll 16
        for (int i = 1; i + q - 1 < count; i += 2) Order(v[i], v[i + q - 1]);
}

template <int side, class Vector>
[[gnu::always_inline]] inline void MergePair(const Vector* a, const Vector* b, Vector* to) {
#pragma GCC unroll 8
    for (int i = 0; i < side; ++i) {
        to[2 * i] = a[i];
        to[2 * i + 1] = b[i];
    }
    MergeInterleaved<2 * side>(to);
}

/// The value of rank `rank` in two sorted runs together.
template <int countA, int countB, int rank, class Vector>
[[gnu::always_inline]] inline void TakeRank(const Vector* a, const Vector* b, Vector& least) {
    bool first = true;
#pragma GCC unroll 16
    for (int fromB = 0; fromB <= countB; ++fromB) { // of the rank + 1 least values
        const int fromA = rank + 1 - fromB;
        if (fromA < 0 || fromA > countA) continue;
        Vector most = fromA > 0 ? a[fromA - 1] : b[fromB - 1];
        if (fromA > 0 && fromB > 0) most = most > b[fromB - 1] ? most : b[fromB - 1];
        least = first || most < least ? most : least;
        first = false;
    }
}

template <int countA, int countB, int first, class Vector, int... rank>
[[gnu::always_inline]] inline void TakeRanks(const Vector* a, const Vector* b, Vector* to,
                                             std::integer_sequence<int, rank...>) {
    (TakeRank<countA, countB, first + rank>(a, b, to[rank]), ...);
}

/// What two windows, one above the other, share: `side` columns of `side - 1` values. Of those sorted, the
/// ranks in which the median of either can be.
template <int side>
struct Shared {
    static constexpr int kTall = side - 1;
    static constexpr int kRank = side * side / 2;
    static constexpr int kFirst = kRank - side > 0 ? kRank - side : 0;
    static constexpr int kCount = (side * kTall < kRank + 1 ? side * kTall : kRank + 1) - kFirst;
};

template <int side, class Vector>
[[gnu::always_inline]] inline void TakeShared(const Vector (*columns)[side - 1], Vector* to) {
    using S = Shared<side>;
    constexpr std::make_integer_sequence<int, S::kCount> ranks;
    Vector left[2 * S::kTall];
    MergePair<S::kTall>(columns[0], columns[1], left);
    if constexpr (side == 2) {
        to[0] = left[0];
        to[1] = left[1];
    } else if constexpr (side == 3) {
        TakeRanks<4, 2, S::kFirst>(left, columns[2], to, ranks);
    } else {
        Vector right[2 * S::kTall];
        MergePair<S::kTall>(columns[2], columns[3], right);
        if constexpr (side == 4) {
            TakeRanks<6, 6, S::kFirst>(left, right, to, ranks);
        } else {
            Vector four[4 * S::kTall];
            MergePair<2 * S::kTall>(left, right, four);
            TakeRanks<16, 4, S::kFirst>(four, columns[4], to, ranks);
        }
    }
}

/// Loads as many samples as there are of a register's.
template <class Sample, class Vector>
[[gnu::always_inline]] inline void LoadSome(const Sample* from, int count, Vector& keys) {
    constexpr int lanes = static_cast<int>(sizeof(Vector) / sizeof(Sample));
    if (count >= lanes) return Load(from, keys);
    Sample last[lanes] = {};
    if (count > 0) std::memcpy(last, from, static_cast<std::size_t>(count) * sizeof(Sample));
    Load(last, keys);
}

template <class Sample, class Vector>
[[gnu::always_inline]] inline void StoreSome(const Vector& keys, int count, Sample* to) {
    constexpr int lanes = static_cast<int>(sizeof(Vector) / sizeof(Sample));
    if (count >= lanes) return Store(keys, to);
    Sample last[lanes];
    Store(keys, last);
    std::memcpy(to, last, static_cast<std::size_t>(count) * sizeof(Sample));
}

/// Sorts each column of `tall` rows of `count` samples; `columns` has rows of `room` keys.
template <int tall, class Sample, class Key>
void SortColumns(const Sample* const* rows, int count, Key* columns, std::size_t room) {
    using V = Vectors<Key>;
    for (int at = 0; at < count; at += V::kLanes) {
        typename V::Vector v[tall];
        for (int r = 0; r < tall; ++r) LoadSome(rows[r] + at, count - at, v[r]);
        Sort<tall>(v);
        for (int r = 0; r < tall; ++r)
            std::memcpy(columns + static_cast<std::size_t>(r) * room + at, &v[r], sizeof v[r]);
    }
}

/// Windows of rows 0 to side - 1, and of rows 1 to side: each adds one row to what both share.
template <int side, class Sample, class Key>
void FilterSide(const Sample* const* rows, int width, Key* columns, std::size_t room, Sample* const* to) {
    using S = Shared<side>;
    using V = Vectors<Key>;
    SortColumns<S::kTall>(rows + 1, width * kChannels, columns, room);
    const int count = (width - side + 1) * kChannels;
    for (int at = 0; at < count; at += V::kLanes) {
        typename V::Vector v[side][S::kTall];
        for (int c = 0; c < side; ++c)
            for (int r = 0; r < S::kTall; ++r)
                std::memcpy(&v[c][r], columns + static_cast<std::size_t>(r) * room + at + c * kChannels,
                            sizeof v[c][r]);
        typename V::Vector shared[S::kCount];
        TakeShared<side>(v, shared);
        for (int window = 0; window < 2; ++window) {
            typename V::Vector row[side], median;
            for (int c = 0; c < side; ++c)
                LoadSome(rows[window * side] + at + c * kChannels, (width - c) * kChannels - at, row[c]);
            Sort<side>(row);
            TakeRank<S::kCount, side, S::kRank - S::kFirst>(shared, row, median);
            StoreSome(median, count - at, to[window] + at);
        }
    }
}

template <class Sample, class Key>
void Filter(int side, const Sample* const* rows, int width, Key* columns, std::size_t room,
            Sample* const* to) {
    constexpr decltype(&FilterSide<2, Sample, Key>) filters[] = {
        FilterSide<2, Sample, Key>, FilterSide<3, Sample, Key>, FilterSide<4, Sample, Key>,
        FilterSide<5, Sample, Key>};
    filters[side - 2](rows, width, columns, room, to);
}

} // namespace

void FilterWords(int side, const std::uint16_t* const* rows, int width, std::int16_t* columns,
                 std::size_t room, std::uint16_t* const* to) {
    Filter(side, rows, width, columns, room, to);
}

void FilterFloats(int side, const float* const* rows, int width, std::int32_t* columns, std::size_t room,
                  float* const* to) {
    Filter(side, rows, width, columns, room, to);
}

} // namespace k7::K7_LEVEL
