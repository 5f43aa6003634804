#pragma once

#include "baselib/Buffer.h"
#include "filters/BlurKernel.h"
#include "library/K7Image.h"

#include <cstddef>
#include <vector>

namespace k7 {

/// The kernel of a streak in segments, each of which reaches over few columns and rows: what a tile of pixels
/// sees of one segment fits in the cache as floats.
class StreakSegments {
public:
    StreakSegments(const BlurKernel* kernel, int count);

    struct Step {
        std::ptrdiff_t offset; ///< of the floats that it adds, from those of the pixel itself
        float weight;
    };
    struct Segment {
        int first, end;               ///< its steps
        int left, right, bottom, top; ///< smallest and largest offset in pixels
    };
    const Segment* begin() const { return segments_.data(); }
    const Segment* end() const { return segments_.data() + segments_.size(); }
    const Step* Steps() const { return steps_.data(); }

private:
    std::vector<Step> steps_;
    std::vector<Segment> segments_;
};

/// Sums the pixels under a streak for one tile of a picture after the other. Each sum adds its products in
/// the order of the kernel. One object a thread.
class StreakSums {
public:
    static constexpr int kColumns = 128, kRows = 64; ///< of a tile, at most

    /// Test the object before use: it is false where allocation fails.
    StreakSums();
    explicit operator bool() const { return sums_ && seen_; }

    /// Blurs a tile whose first pixel is (x, y) from `in` to `out`; edge pixels repeat beyond the frame.
    /// Stops half-way where the frame is aborted.
    template <class Sample>
    void BlurTile(const PictureK7<Sample>& in, const PictureK7<Sample>& out, const StreakSegments& kernel,
                  int x, int y, int columns, int rows);

private:
    Buffer<float> sums_; ///< of the tile's pixels, row after row
    Buffer<float> seen_; ///< what they see of a segment
};

} // namespace k7
