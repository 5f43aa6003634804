#pragma once

#include "baselib/Buffer.h"
#include "library/Samples.h"
#include "motion/BlockMatch.h"

namespace k7 {

class PluginK7;

/// Least and greatest luma, in 256ths of a picture word.
struct LumaRange {
    int low = 0;
    int high = 0;
};

/// The range of two pictures together. Floats count as the nearest word.
template <class Sample>
LumaRange FindLumaRange(PluginK7& core, const PictureK7<Sample>& first, const PictureK7<Sample>& second);

/// Weights of a sampled Gaussian of sigma = size / 3 that reaches to ceil(size) pixels, without those below
/// 1e-5 of the middle; an odd number that sums to 1. A size below 0.01 counts as 0.01. Null if allocation
/// fails.
Buffer<float> MakeBlurKernel(float size);

/// A picture as blurred grey at full, half, quarter and eighth size.
class GreyPyramid {
public:
    static constexpr int kLevels = 4;

    /// Allocates the levels for a picture size. `number` is the buffer's, for the message if allocation
    /// fails.
    [[nodiscard]] bool Make(int width, int height, int number);

    /// Takes a picture of that size: its luma over the range becomes 0 to 255, blurred with the kernel; an
    /// empty range gives 0. False if allocation fails.
    template <class Sample>
    [[nodiscard]] bool Fill(PluginK7& core, const PictureK7<Sample>& picture, LumaRange range,
                            const Buffer<float>& kernel);

    const GreyLevel& operator[](int level) const { return levels_[level]; }

private:
    ImageBuffer<std::uint8_t> store_; ///< the levels, contiguous
    GreyLevel levels_[kLevels];
};

} // namespace k7
