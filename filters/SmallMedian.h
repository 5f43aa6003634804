#pragma once

#include "baselib/Buffer.h"
#include "library/Samples.h"

namespace k7 {

/// The medians of small windows, 64 words at a time: bit by bit from the top, the values that are not below a
/// candidate are counted. The work grows with the window's area, but all of it is vector work.
class SmallMedian {
public:
    /// Windows of up to this many values take less time so than by a histogram.
    static constexpr int kMostValues = 225;

    /// The window is `width` x `height` and lies as Clean's does. Rows are asked for upwards from `first`.
    SmallMedian(const K7Image& image, int width, int height, int first);

    /// False: allocation failed.
    explicit operator bool() const { return ring_ && rows_; }

    /// Writes the medians of row y, in all channels.
    void FilterRow(int y, u16* to);

private:
    u16* RingRow(int y) const;
    void LoadRow(int y);

    const K7Image& image_;
    int width_, height_;
    int next_; ///< row of the picture that is loaded next
    std::size_t rowWords_;
    Buffer<u16> ring_;        ///< the window's rows, each with margins
    Buffer<const u16*> rows_; ///< those that lie on the picture, from the lowest
};

} // namespace k7
