#include "filters/NetworkMedian.h"

#include "baselib/Vector.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace k7 {

namespace {

constexpr int kChannels = K7Image::Channels;

/// 32 bytes of keys.
template <class Key>
struct Vectors {
    typedef Key Vector __attribute__((vector_size(32)));
    static constexpr int kLanes = 32 / sizeof(Key);
};

// Words are below 32768: their order is that of signed integers, for which all processors have minimum and
// maximum. Of a negative float all bits but the sign are turned round.

template <class Vector>
K7_ALWAYS_INLINE void Load(const u16* samples, Vector& keys) {
    std::memcpy(&keys, samples, sizeof keys);
}
template <class Vector>
K7_ALWAYS_INLINE void Load(const float* samples, Vector& keys) {
    std::memcpy(&keys, samples, sizeof keys);
    keys ^= keys >> 31 & 0x7fffffff;
}
template <class Vector>
K7_ALWAYS_INLINE void Store(const Vector& keys, u16* samples) {
    std::memcpy(samples, &keys, sizeof keys);
}
template <class Vector>
K7_ALWAYS_INLINE void Store(const Vector& keys, float* samples) {
    const Vector bits = keys ^ (keys >> 31 & 0x7fffffff);
    std::memcpy(samples, &bits, sizeof bits);
}

template <class Vector>
K7_ALWAYS_INLINE void Order(Vector& a, Vector& b) {
    const Vector low = a < b ? a : b;
    b = a < b ? b : a;
    a = low;
}

/// Sorts `count` vectors lane by lane, by insertion.
template <int count, class Vector>
K7_ALWAYS_INLINE void Sort(Vector* v) {
#pragma GCC unroll 8
    for (int end = 1; end < count; ++end)
#pragma GCC unroll 8
        for (int i = end; i > 0; --i) Order(v[i - 1], v[i]);
}

/// Merges two sorted runs that lie at the even and at the odd places (Knuth, The Art of Computer Programming
/// 3, 5.2.2, Algorithm M, its last round).
template <int count, class Vector>
K7_ALWAYS_INLINE void MergeInterleaved(Vector* v) {
#pragma GCC unroll 16
    for (int i = 0; i + 1 < count; i += 2) Order(v[i], v[i + 1]);
    constexpr int top = static_cast<int>(std::bit_ceil(static_cast<unsigned>(count))) / 2;
#pragma GCC unroll 8
    for (int q = top; q > 1; q /= 2)
#pragma GCC unroll 16
        for (int i = 1; i + q - 1 < count; i += 2) Order(v[i], v[i + q - 1]);
}

template <int side, class Vector>
K7_ALWAYS_INLINE void MergePair(const Vector* a, const Vector* b, Vector* to) {
#pragma GCC unroll 8
    for (int i = 0; i < side; ++i) {
        to[2 * i] = a[i];
        to[2 * i + 1] = b[i];
    }
    MergeInterleaved<2 * side>(to);
}

/// The value of rank `rank` in two sorted runs together.
template <int countA, int countB, int rank, class Vector>
K7_ALWAYS_INLINE void TakeRank(const Vector* a, const Vector* b, Vector& least) {
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

/// The median of a window of sorted columns: `columns[c]` has `side` vectors.
template <int side, class Vector>
K7_ALWAYS_INLINE void Select(const Vector (*columns)[side], Vector& median) {
    constexpr int rank = side * side / 2;
    if constexpr (side == 2) {
        TakeRank<2, 2, rank>(columns[0], columns[1], median);
    } else {
        Vector left[2 * side];
        MergePair<side>(columns[0], columns[1], left);
        if constexpr (side == 3) {
            TakeRank<6, 3, rank>(left, columns[2], median);
        } else {
            Vector right[2 * side];
            MergePair<side>(columns[2], columns[3], right);
            if constexpr (side == 4) {
                TakeRank<8, 8, rank>(left, right, median);
            } else {
                Vector four[4 * side];
                MergePair<2 * side>(left, right, four);
                TakeRank<20, 5, rank>(four, columns[4], median);
            }
        }
    }
}

/// Sorts each column of `side` rows of `count` samples; `columns` has rows of `room` keys.
template <int side, class Sample, class Key>
K7_WIDE_VECTORS void SortColumns(const Sample* const* rows, int count, Key* columns, std::size_t room) {
    using V = Vectors<Key>;
    for (int at = 0; at < count; at += V::kLanes) {
        typename V::Vector v[side];
        for (int r = 0; r < side; ++r) {
            Sample last[V::kLanes] = {}; // the end of a row may be shorter
            const bool whole = at + V::kLanes <= count;
            if (!whole) std::copy_n(rows[r] + at, count - at, last);
            Load(whole ? rows[r] + at : last, v[r]);
        }
        Sort<side>(v);
        for (int r = 0; r < side; ++r)
            std::memcpy(columns + static_cast<std::size_t>(r) * room + at, &v[r], sizeof v[r]);
    }
}

template <int side, class Sample, class Key>
K7_WIDE_VECTORS void SelectMedians(const Key* columns, std::size_t room, int count, Sample* to) {
    using V = Vectors<Key>;
    for (int at = 0; at < count; at += V::kLanes) {
        typename V::Vector v[side][side];
        for (int c = 0; c < side; ++c)
            for (int r = 0; r < side; ++r)
                std::memcpy(&v[c][r], columns + static_cast<std::size_t>(r) * room + at + c * kChannels,
                            sizeof v[c][r]);
        typename V::Vector median;
        Select<side>(v, median);
        if (at + V::kLanes <= count) {
            Store(median, to + at);
        } else {
            Sample last[V::kLanes];
            Store(median, last);
            std::copy_n(last, count - at, to + at);
        }
    }
}

template <int side, class Sample, class Key>
void FilterWindows(const PictureK7<Sample>& image, int low, Key* columns, std::size_t room, Sample* to) {
    SortColumns<side>(image.Rows + low, image.Width * kChannels, columns, room);
    SelectMedians<side>(columns, room, (image.Width - side + 1) * kChannels, to);
}

} // namespace

template <class Sample>
NetworkMedian<Sample>::NetworkMedian(const PictureK7<Sample>& image)
    : image_(image)
    , room_(static_cast<std::size_t>(image.Width + kMost) * kChannels + 2 * Vectors<Key>::kLanes)
    , columns_(kMost * room_, "Clean", __LINE__) {
    columns_.Zero();
}

template <class Sample>
void NetworkMedian<Sample>::FilterRow(int side, int low, Sample* to) {
    constexpr decltype(&FilterWindows<2, Sample, Key>) filters[] = {
        FilterWindows<2, Sample, Key>, FilterWindows<3, Sample, Key>, FilterWindows<4, Sample, Key>,
        FilterWindows<5, Sample, Key>};
    filters[side - kLeast](image_, low, columns_.data(), room_, to);
}

template class NetworkMedian<u16>;
template class NetworkMedian<float>;

} // namespace k7
