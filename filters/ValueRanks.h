#pragma once

#include "baselib/Buffer.h"
#include "library/K7Image.h"

#include <cstdint>

namespace k7 {

/// Part of a picture, in pixels.
struct Region {
    int x, y, width, height;
};

/// The values of a part of a float picture as places in their order, from 0, each channel by itself: what
/// ranks integers, ranks floats so. Negative zero stands before zero.
class ValueRanks {
public:
    /// For parts of up to `mostPixels`.
    explicit ValueRanks(std::size_t mostPixels);
    explicit operator bool() const { return keys_ && sorted_ && ranks_ && values_; }

    /// Ranks the first `channels` channels of a part; the others get 0.
    void Fill(const FloatImageK7& image, const Region& part, int channels);

    /// The part's pixels as ranks, four to a pixel, rows contiguous.
    std::uint32_t* Ranks() const { return ranks_.data(); }
    float Value(int channel, std::uint32_t rank) const {
        return values_[static_cast<std::size_t>(channel) * most_ + rank];
    }

private:
    void FillChannel(const FloatImageK7& image, const Region& part, int channel);
    void Sort(std::size_t count);

    std::size_t most_;
    Buffer<std::uint64_t> keys_; ///< a value's bits above its place in the part
    Buffer<std::uint64_t> sorted_;
    Buffer<std::uint32_t> ranks_;
    Buffer<float> values_; ///< by channel and rank
};

} // namespace k7
