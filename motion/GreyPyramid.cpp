#include "motion/GreyPyramid.h"

#include "frame/PluginK7.h"
#include "library/K7Image.h"
#include "motion/WorkBuffer.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>

namespace k7 {

namespace {

/// 0.30, 0.50 and 0.20 in 256ths.
int Luma(const u16* pixel) {
    return 77 * pixel[0] + 128 * pixel[1] + 51 * pixel[2];
}
int Luma(const float* pixel) {
    const auto word = [](float value) {
        return static_cast<int>(std::clamp(value, 0.0f, static_cast<float>(kFullScale)) + 0.5f);
    };
    return 77 * word(pixel[0]) + 128 * word(pixel[1]) + 51 * word(pixel[2]);
}

void TakeLess(std::atomic<int>& least, int value) {
    for (int held = least; value < held && !least.compare_exchange_weak(held, value);) {}
}

float Gaussian(int distance, float sigma) {
    const std::int64_t square = static_cast<std::int64_t>(distance) * distance;
    return std::exp(static_cast<float>(-square) / (2.0f * sigma * sigma));
}

/// Blurs the grey of a picture row by row. Rows blurred along themselves stay in a ring until the column sums
/// above them are done, so that no plane of floats is needed.
template <class Sample>
class GreyBlur {
public:
    GreyBlur(const PictureK7<Sample>& picture, LumaRange range, const Buffer<float>& kernel)
        : picture_(picture)
        , range_(range)
        , kernel_(kernel)
        , half_(static_cast<int>(kernel.size() / 2))
        , ringRows_(static_cast<int>(std::min(kernel.size(), static_cast<std::size_t>(picture.Height))))
        , width_(static_cast<std::size_t>(picture.Width))
        , padded_(width_ + kernel.size() - 1, "MoBlur")
        , sums_(width_, "MoBlur")
        , ring_(width_ * static_cast<std::size_t>(ringRows_), "MoBlur") {}

    explicit operator bool() const { return padded_ && sums_ && ring_; }

    void WriteRows(const PluginK7& core, int first, int last, const GreyLevel& target) {
        int next = std::max(first - half_, 0); // first row that is not in the ring
        for (int y = first; y <= last && !core.IsAborted(); ++y) {
            const int end = std::min(y + half_, picture_.Height - 1);
            while (next <= end) {
                if (core.IsAborted()) return;
                BlurRow(next++);
            }
            WriteRow(y, target.Row(y));
        }
    }

private:
    float* RingRow(int y) { return ring_.data() + static_cast<std::size_t>(y % ringRows_) * width_; }

    /// Adds weight x row to the sums of each pixel. The sums grow tap by tap from the lowest position.
    static void AddScaled(float* sums, const float* row, float weight, std::size_t count) {
        for (std::size_t x = 0; x < count; ++x) sums[x] += row[x] * weight;
    }

    void BlurRow(int y) {
        // Convert luma to grey, with the edge pixels repeated to both sides.
        const float scale = 255.0f / static_cast<float>(range_.high - range_.low);
        float* grey = padded_.data() + half_;
        const Sample* pixel = picture_.Rows[y];
        for (std::size_t x = 0; x < width_; ++x, pixel += K7Image::Channels)
            grey[x] =
                static_cast<float>(static_cast<int>(static_cast<float>(Luma(pixel) - range_.low) * scale));
        std::fill(padded_.begin(), grey, grey[0]);
        std::fill(grey + width_, padded_.end(), grey[width_ - 1]);

        float* row = RingRow(y);
        std::fill(row, row + width_, 0.0f);
        for (std::size_t k = 0; k < kernel_.size(); ++k)
            AddScaled(row, padded_.data() + k, kernel_[k], width_);
    }

    void WriteRow(int y, std::uint8_t* target) {
        sums_.Zero();
        for (std::size_t k = 0; k < kernel_.size(); ++k) {
            const int source = std::clamp(y + static_cast<int>(k) - half_, 0, picture_.Height - 1);
            AddScaled(sums_.data(), RingRow(source), kernel_[k], width_);
        }
        for (std::size_t x = 0; x < width_; ++x)
            target[x] = static_cast<std::uint8_t>(static_cast<int>(std::clamp(sums_[x], 0.0f, 255.0f)));
    }

    const PictureK7<Sample>& picture_;
    LumaRange range_;
    const Buffer<float>& kernel_;
    int half_;
    int ringRows_;
    std::size_t width_;
    Buffer<float> padded_;
    Buffer<float> sums_;
    Buffer<float> ring_;
};

void HalveLevel(const GreyLevel& source, const GreyLevel& target) {
    for (int y = 0; y < target.Height; ++y) {
        const std::uint8_t* upper = source.Row(2 * y);
        const std::uint8_t* lower = source.Row(2 * y + 1);
        std::uint8_t* out = target.Row(y);
        for (int x = 0; x < target.Width; ++x, upper += 2, lower += 2)
            out[x] = static_cast<std::uint8_t>((upper[0] + upper[1] + lower[0] + lower[1]) >> 2);
    }
}

} // namespace

template <class Sample>
LumaRange FindLumaRange(PluginK7& core, const PictureK7<Sample>& first, const PictureK7<Sample>& second) {
    std::atomic<int> least = std::numeric_limits<int>::max();
    std::atomic<int> leastNegative = std::numeric_limits<int>::max();
    RunRows(core, first.Height, [&](int firstRow, int lastRow) {
        int low = std::numeric_limits<int>::max();
        int high = 0;
        for (int y = firstRow; y <= lastRow && !core.IsAborted(); ++y)
            for (const PictureK7<Sample>* picture : {&first, &second}) {
                const Sample* pixel = picture->Rows[y];
                for (int x = 0; x < picture->Width; ++x, pixel += K7Image::Channels) {
                    const int luma = Luma(pixel);
                    low = std::min(low, luma);
                    high = std::max(high, luma);
                }
            }
        TakeLess(least, low);
        TakeLess(leastNegative, -high);
    });
    return {least, -leastNegative};
}

template LumaRange FindLumaRange(PluginK7&, const K7Image&, const K7Image&);
template LumaRange FindLumaRange(PluginK7&, const FloatImageK7&, const FloatImageK7&);

Buffer<float> MakeBlurKernel(float size) {
    // Weights decrease from the middle outward: keep those up to the last one that counts.
    const float reach = size > 0.01f ? size : 0.01f;
    const float sigma = reach / 3.0f;
    const int end = Trunc(std::ceil(reach));
    int half = 0;
    while (half < end && Gaussian(half + 1, sigma) > 1e-5) ++half;

    Buffer<float> kernel(static_cast<std::size_t>(2 * half + 1), "MoBlur");
    if (!kernel) return kernel;
    float sum = 0.0f;
    for (int i = -half; i <= half; ++i)
        sum += kernel[static_cast<std::size_t>(i + half)] = Gaussian(i, sigma);
    for (float& weight : kernel) weight /= sum;
    return kernel;
}

bool GreyPyramid::Make(int width, int height, int number) {
    std::size_t count = 0;
    std::size_t starts[kLevels];
    for (int l = 0; l < kLevels; ++l) {
        levels_[l] = {nullptr, width >> l, height >> l};
        starts[l] = count;
        count += static_cast<std::size_t>(levels_[l].Width) * static_cast<std::size_t>(levels_[l].Height);
    }
    if (!MakeWorkBuffer(store_, count, number)) return false;
    for (int l = 0; l < kLevels; ++l) levels_[l].Pixels = store_.data() + starts[l];
    return true;
}

template <class Sample>
bool GreyPyramid::Fill(PluginK7& core, const PictureK7<Sample>& picture, LumaRange range,
                       const Buffer<float>& kernel) {
    if (range.low == range.high) {
        store_.Zero();
        return true;
    }
    std::atomic<bool> failed = false;
    RunRows(core, picture.Height, [&](int first, int last) {
        if (first > last) return;
        GreyBlur<Sample> blur(picture, range, kernel);
        if (blur)
            blur.WriteRows(core, first, last, levels_[0]);
        else
            failed = true;
    });
    for (int l = 1; l < kLevels && !core.IsAborted(); ++l) HalveLevel(levels_[l - 1], levels_[l]);
    return !failed;
}

template bool GreyPyramid::Fill(PluginK7&, const K7Image&, LumaRange, const Buffer<float>&);
template bool GreyPyramid::Fill(PluginK7&, const FloatImageK7&, LumaRange, const Buffer<float>&);

} // namespace k7
