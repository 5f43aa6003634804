#include "filters/SmallMedian.h"

#include "baselib/Vector.h"
#include "library/K7Image.h"

#include <algorithm>
#include <cstring>

namespace k7 {

namespace {

constexpr int kTile = 64;
constexpr int kTilePixels = kTile / K7Image::Channels;

/// What stands beyond the ends of a row: never below a candidate.
constexpr u16 kOutside = 65535;

/// Medians of 64 neighbouring words. `rows` are those of the window, from word `left` on; `needed` is how
/// many values of a word's window (those outside included) must not lie below its median.
K7_WIDE_VECTORS void MedianTile(const u16* const* rows, int count, std::size_t left, int columns,
                                const u16* needed, u16* to) {
    u16 median[kTile] = {};
    for (int bit = 0x8000; bit != 0; bit >>= 1) {
        u16 candidate[kTile];
        u16 notBelow[kTile] = {};
        for (int i = 0; i < kTile; ++i) candidate[i] = static_cast<u16>(median[i] | bit);
        for (int y = 0; y < count; ++y) {
            const u16* word = rows[y] + left;
            for (int x = 0; x < columns; ++x, word += K7Image::Channels)
                for (int i = 0; i < kTile; ++i)
                    notBelow[i] = static_cast<u16>(notBelow[i] + (word[i] >= candidate[i]));
        }
        for (int i = 0; i < kTile; ++i) median[i] = notBelow[i] >= needed[i] ? candidate[i] : median[i];
    }
    std::copy_n(median, kTile, to);
}

} // namespace

SmallMedian::SmallMedian(const K7Image& image, int width, int height, int first)
    : image_(image)
    , width_(width)
    , height_(height)
    , next_(std::max(first - height / 2, 0))
    , rowWords_(static_cast<std::size_t>(image.Width + width + kTilePixels) * K7Image::Channels)
    , ring_(rowWords_ * static_cast<std::size_t>(height), "Clean", __LINE__)
    , rows_(static_cast<std::size_t>(height), "Clean", __LINE__) {
    std::fill(ring_.begin(), ring_.end(), kOutside);
}

u16* SmallMedian::RingRow(int y) const {
    return ring_.data() + rowWords_ * static_cast<std::size_t>(y % height_);
}

void SmallMedian::LoadRow(int y) {
    std::memcpy(RingRow(y) + width_ / 2 * K7Image::Channels, image_.Rows[y], image_.RowBytes());
}

void SmallMedian::FilterRow(int y, u16* to) {
    const int low = std::max(y - height_ / 2, 0);
    const int high = std::min(y - height_ / 2 + height_ - 1, image_.Height - 1);
    for (; next_ <= high; ++next_) LoadRow(next_);
    const int count = high - low + 1;
    for (int i = 0; i < count; ++i) rows_[static_cast<std::size_t>(i)] = RingRow(low + i);

    for (int x = 0; x < image_.Width; x += kTilePixels) {
        u16 needed[kTile];
        u16 medians[kTile];
        for (int i = 0; i < kTile; ++i) {
            const int left = x + i / K7Image::Channels - width_ / 2;
            const int inside = std::min(left + width_, image_.Width) - std::max(left, 0);
            needed[i] = static_cast<u16>(count * width_ - count * inside / 2);
        }
        const std::size_t at = static_cast<std::size_t>(x) * K7Image::Channels;
        MedianTile(rows_.data(), count, at, width_, needed, medians);
        const int pixels = std::min(kTilePixels, image_.Width - x);
        std::copy_n(medians, pixels * K7Image::Channels, to + at);
    }
}

} // namespace k7
