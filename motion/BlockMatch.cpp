#include "motion/BlockMatch.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace k7 {

namespace {

constexpr int kBlockSide = 2 * kBlockHalf + 1;
constexpr int kSearchSide = 2 * kSearchHalf + 1;
constexpr int kWindowSide = kBlockSide + kSearchSide - 1; ///< the pixels that all candidates cover together

/// An inclusive range of columns or rows.
struct Span {
    bool Empty() const { return first > last; }
    int Count() const { return last - first + 1; }

    int first;
    int last;
};

/// The part of a span moved by `offset` that lies in 0 to size - 1, in the span's own positions.
Span Clip(Span span, int offset, int size) {
    return {std::max(span.first, -offset), std::min(span.last, size - 1 - offset)};
}

// The cost of a candidate is the sum of absolute differences where a block lies over the level at an offset.
// It is exact below `limit`; a candidate that is certain to reach the limit may return any sum from there on.

/// The costs of a block, or of the part of it that lies in the level.
class AnyCandidates {
public:
    AnyCandidates(const GreyLevel& current, const GreyLevel& previous, Span columns, Span rows)
        : current_(current)
        , previous_(previous)
        , columns_(columns)
        , rows_(rows) {}

    int Cost(int offsetX, int offsetY, int) const {
        const Span columns = Clip(columns_, offsetX, current_.Width);
        const Span rows = Clip(rows_, offsetY, current_.Height);
        int sum = 0;
        for (int y = rows.first; y <= rows.last; ++y) {
            const std::uint8_t* a = previous_.Row(y) + columns.first;
            const std::uint8_t* b = current_.Row(y + offsetY) + columns.first + offsetX;
            for (int x = 0; x < columns.Count(); ++x) sum += std::abs(a[x] - b[x]);
        }
        return sum;
    }

private:
    const GreyLevel& current_;
    const GreyLevel& previous_;
    Span columns_;
    Span rows_;
};

#ifdef __SSE2__

__m128i Load(const std::uint8_t* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

/// A whole block: a row of its 17 pixels is one vector and one pixel. The last pixels of the rows form a
/// column.
struct Block {
    Block(const std::uint8_t* pixels, std::ptrdiff_t stride) {
        for (int y = 0; y < kBlockSide; ++y) {
            rows[y] = Load(pixels + y * stride);
            column[y] = pixels[y * stride + kBlockSide - 1];
        }
    }

    __m128i rows[kBlockSide];
    std::uint8_t column[kBlockSide];
};

int Sum(__m128i sums) {
    return _mm_cvtsi128_si32(_mm_add_epi64(sums, _mm_unpackhi_epi64(sums, sums)));
}

/// How many rows are summed between checks of the limit.
constexpr int kRowsAtOnce = 4;

/// The same costs for a whole block whose candidates all lie inside the level. `window` is the lowest corner
/// that they reach, at (minX, minY) from the block's.
class InnerCandidates {
public:
    InnerCandidates(const Block& block, const std::uint8_t* window, std::ptrdiff_t stride, int minX, int minY)
        : block_(block)
        , window_(window)
        , stride_(stride)
        , minX_(minX)
        , minY_(minY) {
        for (int y = 0; y < kWindowSide; ++y)
            for (int x = 0; x < kSearchSide; ++x) columns_[x][y] = window[y * stride + kBlockSide - 1 + x];
    }

    int Cost(int offsetX, int offsetY, int limit) const {
        const int x = offsetX - minX_;
        const int y = offsetY - minY_;
        const std::uint8_t* column = columns_[x] + y;
        const std::uint8_t* at = window_ + y * stride_ + x;
        const auto row = [&](int i) { return _mm_sad_epu8(block_.rows[i], Load(at + i * stride_)); };

        __m128i sums = _mm_cvtsi32_si128(std::abs(block_.column[kBlockSide - 1] - column[kBlockSide - 1]));
        sums = _mm_add_epi64(sums, _mm_sad_epu8(Load(block_.column), Load(column)));
        sums = _mm_add_epi64(sums, row(0));
        for (int i = 1;;) {
            for (const int end = i + kRowsAtOnce; i < end; ++i) sums = _mm_add_epi64(sums, row(i));
            const int sum = Sum(sums);
            if (i == kBlockSide || sum >= limit) return sum;
        }
    }

private:
    static_assert((kBlockSide - 1) % kRowsAtOnce == 0);

    const Block& block_;
    const std::uint8_t* window_;
    std::ptrdiff_t stride_;
    int minX_;
    int minY_;
    std::uint8_t columns_[kSearchSide][kWindowSide]; ///< the last columns of all candidates
};

/// The same for a whole block whose candidates reach over the level's border. Pixels of the block that have
/// nothing to be compared with are masked out, and the window is 0 there.
class BorderCandidates {
public:
    BorderCandidates(const Block& block, const GreyLevel& level, int windowX, int windowY, int minX, int minY)
        : block_(block)
        , rows_(Clip({0, kWindowSide - 1}, windowY, level.Height))
        , minX_(minX)
        , minY_(minY) {
        const Span columns = Clip({0, kWindowSide - 1}, windowX, level.Width);
        const auto count = static_cast<std::size_t>(std::max(columns.Count(), 0));
        if (count == 0) return;
        std::memset(inside_ + columns.first, 255, count);
        for (int y = rows_.first; y <= rows_.last; ++y)
            std::memcpy(window_[y] + columns.first, level.Row(windowY + y) + windowX + columns.first, count);
    }

    int Cost(int offsetX, int offsetY, int limit) const {
        const int x = offsetX - minX_;
        const int y = offsetY - minY_;
        const __m128i inside = Load(inside_ + x);
        const bool lastInside = inside_[x + kBlockSide - 1] != 0;
        const Span rows = {std::max(rows_.first - y, 0), std::min(rows_.last - y, kBlockSide - 1)};
        int sum = 0;
        for (int i = rows.first; i <= rows.last && sum < limit;) {
            __m128i sums = _mm_setzero_si128();
            for (const int end = std::min(i + kRowsAtOnce, rows.last + 1); i < end; ++i) {
                const std::uint8_t* at = window_[y + i] + x;
                sums = _mm_add_epi64(sums, _mm_sad_epu8(_mm_and_si128(block_.rows[i], inside), Load(at)));
                if (lastInside) sum += std::abs(block_.column[i] - at[kBlockSide - 1]);
            }
            sum += Sum(sums);
        }
        return sum;
    }

private:
    const Block& block_;
    Span rows_; ///< of the window that lie in the level
    int minX_;
    int minY_;
    std::uint8_t inside_[kWindowSide] = {}; ///< 255 for columns of the window that lie in the level
    std::uint8_t window_[kWindowSide][kWindowSide] = {};
};

#endif

/// A position or an offset.
struct Point {
    int x;
    int y;
};

/// The best offset around `move`.
template <class Candidates>
Point Search(const Candidates& candidates, Point move) {
    // The guess itself is often close to the best. Its cost is a bound that ends most candidates early, and
    // one above it lets any candidate as good as the guess win in its turn.
    Point found = move;
    int best = candidates.Cost(move.x, move.y, std::numeric_limits<int>::max()) + 1;
    for (int y = move.y - kSearchHalf; y <= move.y + kSearchHalf; ++y)
        for (int x = move.x - kSearchHalf; x <= move.x + kSearchHalf; ++x) {
            const int cost = candidates.Cost(x, y, best);
            if (cost >= best) continue;
            best = cost;
            found = {x, y};
            if (best == 0) return found; // nothing later can be less
        }
    return found;
}

#ifdef __SSE2__
Point SearchWhole(const GreyLevel& current, const GreyLevel& previous, Point corner, Point move) {
    const Block block(previous.Row(corner.y) + corner.x, previous.Width);
    const int minX = move.x - kSearchHalf;
    const int minY = move.y - kSearchHalf;
    const int windowX = corner.x + minX;
    const int windowY = corner.y + minY;
    if (windowX >= 0 && windowY >= 0 && windowX + kWindowSide <= current.Width &&
        windowY + kWindowSide <= current.Height)
        return Search(InnerCandidates(block, current.Row(windowY) + windowX, current.Width, minX, minY),
                      move);
    return Search(BorderCandidates(block, current, windowX, windowY, minX, minY), move);
}
#endif

/// The best offset of the part of a block that lies in the level.
Point SearchBlock(const GreyLevel& current, const GreyLevel& previous, Span columns, Span rows, Point move) {
#ifdef __SSE2__
    if (columns.Count() == kBlockSide && rows.Count() == kBlockSide)
        return SearchWhole(current, previous, {columns.first, rows.first}, move);
#endif
    return Search(AnyCandidates(current, previous, columns, rows), move);
}

} // namespace

bool MatchBlock(const GreyLevel& current, const GreyLevel& previous, int blockX, int blockY, int guessX,
                int guessY, int* resultX, int* resultY) {
    *resultX = guessX;
    *resultY = guessY;
    const Span columns = Clip({blockX - kBlockHalf, blockX + kBlockHalf}, 0, current.Width);
    const Span rows = Clip({blockY - kBlockHalf, blockY + kBlockHalf}, 0, current.Height);
    const Point move = {guessX - blockX, guessY - blockY};
    const auto touches = [](Span span, int offset, int size) {
        return !span.Empty() && span.last + offset + kSearchHalf >= 0 &&
               span.first + offset - kSearchHalf < size;
    };
    if (!touches(columns, move.x, current.Width) || !touches(rows, move.y, current.Height)) return false;

    const Point found = SearchBlock(current, previous, columns, rows, move);
    *resultX = columns.first + found.x + kBlockHalf;
    *resultY = rows.first + found.y + kBlockHalf;
    return true;
}

} // namespace k7
