#include "library/K7Image.h"

#include "baselib/Buffer.h"
#include "baselib/Vector.h"
#include "library/Chunks.h"
#include "library/GaussianKernel.h"
#include "library/KernelSums.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace k7 {

namespace {

/// A word with `amount` times its distance from the blur added. `sum` is a whole number below 2^53.
K7_ALWAYS_INLINE u16 Sharpened(u16 word, double sum, double divisor, float amount) {
    // A quotient can only err upwards, onto the next whole number.
    auto blur = static_cast<int>(sum / divisor);
    blur -= static_cast<double>(blur) * divisor > sum;

    const float result = static_cast<float>(word - blur) * amount + static_cast<float>(word);
    const double rounded = static_cast<double>(result) + 0.5;
    const double clamped = rounded > 0.0 ? rounded : 0.0;
    return static_cast<u16>(static_cast<int>(clamped < 32767.0 ? clamped : 32767.0));
}

K7_ALWAYS_INLINE float Sharpened(float value, double sum, double divisor, float amount) {
    return static_cast<float>((value - sum / divisor) * static_cast<double>(amount) + value);
}

/// Samples of a row that are sharpened together, as vectors.
constexpr int kTile = 64;

/// One row of a channel; `target` may be `source`. `sums` goes on for kTile more than the row.
template <class Sample>
K7_WIDE_VECTORS void SharpenRow(const double* sums, double divisor, float amount, int width,
                                const Sample* source, Sample* target) {
    Sample samples[kTile] = {};
    for (int x = 0; x < width; x += kTile, sums += kTile) {
        const int count = std::min(kTile, width - x);
        for (int i = 0; i < count; ++i, source += K7Image::Channels) samples[i] = *source;
        for (int i = 0; i < kTile; ++i) samples[i] = Sharpened(samples[i], sums[i], divisor, amount);
        for (int i = 0; i < count; ++i, target += K7Image::Channels) *target = samples[i];
    }
}

/// The largest sum of words times weights that a picture can give.
double MostOf(int width, int height) {
    return 64.0 * kFullScale * width * height;
}

/// Clamps a radius to one at which the kernel's sum, 83 times its square, exceeds that: there, as at every
/// larger one, the blur of words is 0. Of floats it is not, but a kernel of a million pixels is flat.
float ClampedRadius(float radius, const K7Image& image) {
    return std::min(radius, static_cast<float>(2.0 + std::sqrt(MostOf(image.Width, image.Height) / 80.0)));
}
float ClampedRadius(float radius, const FloatImageK7&) {
    return std::min(radius, 1048576.0f);
}

/// Infinite amounts as the largest, so that no difference stays none; NaN as 0.
float FiniteAmount(float amount) {
    constexpr float most = std::numeric_limits<float>::max();
    return std::isnan(amount) ? 0.0f : std::clamp(amount, -most, most);
}

std::unique_ptr<KernelSums<u16>> MakeSums(const GaussianKernel2D& kernel, KernelReach reach,
                                          const K7Image& image) {
    // Where the blur is 0 any sum will do.
    if (static_cast<double>(kernel.Sum) > MostOf(image.Width, image.Height)) reach = {0, 0};
    const bool small = kernel.Sum <= kMostDotWeight || 64 * reach.Places() <= kMostDotWeight;
    return (small ? MakeDotSums : MakeTransformSums<u16>)(kernel, reach, image.Width, image.Height);
}

std::unique_ptr<KernelSums<float>> MakeSums(const GaussianKernel2D& kernel, KernelReach reach,
                                            const FloatImageK7& image) {
    if (kernel.Size <= kMostBellSize) return MakeBellSums(kernel, image.Width, image.Height);
    return MakeTransformSums<float>(kernel, reach, image.Width, image.Height);
}

} // namespace

template <class Sample>
void PictureK7<Sample>::UnsharpMask(float radius, float amount, const PictureK7* source, bool withAlpha) {
    const GaussianKernel2D kernel = MakeGaussianKernel2D(ClampedRadius(radius, *this));
    const KernelReach reach = {std::min(kernel.Size / 2, Width - 1), std::min(kernel.Size / 2, Height - 1)};
    const PictureK7& from = source ? *source : *this;
    const double divisor = static_cast<double>(kernel.Sum);
    const float finite = FiniteAmount(amount);
    const int channels = withAlpha ? 4 : 3;
    constexpr int together = SampleTraits<Sample>::kWords ? 1 : kFloatChannels;
    // Channels have nothing to do with each other: each thread takes some of them.
    RunImageRows((channels + together - 1) / together, [&](int first, int last) {
        if (first > last) return;
        const auto sums = MakeSums(kernel, reach, *this);
        Buffer<double> row(static_cast<std::size_t>(Width) + kTile, "library/K7Image", __LINE__);
        if (!sums || !row) return ReportMessage(kNoKernelMessage);
        row.Zero(); // the last samples are sharpened together with what stands behind them
        const int end = std::min((last + 1) * together, channels);
        for (int c = first * together; c < end && !AbortRequested(); ++c) {
            sums->Start(from, c);
            for (int y = 0; y < Height && !AbortRequested(); ++y) {
                sums->Row(y, row.data());
                SharpenRow(row.data(), divisor, finite, Width, from.Rows[y] + c, Rows[y] + c);
            }
        }
    });
    if (!withAlpha && source) CopyAlpha(source);
}

template void K7Image::UnsharpMask(float, float, const K7Image*, bool);
template void FloatImageK7::UnsharpMask(float, float, const FloatImageK7*, bool);

} // namespace k7
