#pragma once

#include "baselib/Buffer.h"
#include "library/K7Image.h"

#include <cstdint>
#include <type_traits>

namespace k7 {

/// Medians of square windows of 2 to 5 pixels a side that lie on the picture, by comparators only: columns
/// are sorted once for all windows that share them, merged in pairs, and of what two windows share that lie
/// above each other only the ranks are kept in which a median can be (Batcher, Sorting networks and their
/// applications, 1968; sharing after Adams, Fast median filters using separable sorting networks, 2021). A
/// vector holds neighbouring samples, so that there is neither a branch nor a table.
template <class Sample>
class NetworkMedian {
public:
    static constexpr int kLeast = 2, kMost = 5;

    explicit NetworkMedian(const PictureK7<Sample>& image);
    /// False: allocation failed.
    explicit operator bool() const { return columns_ && spare_; }

    /// Writes the medians of windows of `side` pixels whose lowest row is `low`, from the leftmost window on,
    /// into `to`, and of those one row higher into `above`, if not null: one pixel for each of the Width -
    /// side + 1 windows. What the latter see beyond the picture is its last row.
    void FilterRows(int side, int low, Sample* to, Sample* above);

private:
    /// What is compared: integers with the order of the samples.
    using Key = std::conditional_t<SampleTraits<Sample>::kWords, std::int16_t, std::int32_t>;

    const PictureK7<Sample>& image_;
    std::size_t room_;     ///< of a row of keys, with a vector to spare
    Buffer<Key> columns_;  ///< kMost rows: the lowest of each column, the next, and so on
    Buffer<Sample> spare_; ///< for a row that nobody wants
};

} // namespace k7
