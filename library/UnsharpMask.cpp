#include "library/K7Image.h"

#include "baselib/Buffer.h"
#include "baselib/Vector.h"
#include "library/Chunks.h"
#include "library/GaussianKernel.h"
#include "library/KernelSums.h"
#include "library/TableSums.h"

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

/// One row of all channels, whose amounts stand side by side as often as a tile has pixels. `sums` are whole
/// tiles.
K7_WIDE_VECTORS void SharpenPixels(const std::int32_t* sums, double divisor, const float* amounts,
                                   int samples, const u16* source, u16* target) {
    u16 words[kTile] = {};
    for (int x = 0; x < samples; x += kTile, sums += kTile) {
        const int count = std::min(kTile, samples - x);
        std::copy_n(source + x, count, words);
        for (int i = 0; i < kTile; ++i) words[i] = Sharpened(words[i], sums[i], divisor, amounts[i]);
        std::copy_n(words, count, target + x);
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
    return MakeTransformSums<u16>(kernel, reach, image.Width, image.Height);
}

std::unique_ptr<KernelSums<float>> MakeSums(const GaussianKernel2D& kernel, KernelReach reach,
                                            const FloatImageK7& image) {
    if (kernel.Size <= kMostBellSize) return MakeBellSums(kernel, image.Width, image.Height);
    return MakeTransformSums<float>(kernel, reach, image.Width, image.Height);
}

/// What a mask needs beside the pictures.
struct Mask {
    const GaussianKernel2D& kernel;
    KernelReach reach;
    float amount;
    bool withAlpha;

    double Divisor() const { return static_cast<double>(kernel.Sum); }
};

/// Channels have nothing to do with each other: each thread takes some of them.
template <class Sample>
void SharpenChannels(const Mask& mask, const PictureK7<Sample>& from, const PictureK7<Sample>& to) {
    const int channels = mask.withAlpha ? 4 : 3;
    constexpr int together = SampleTraits<Sample>::kWords ? 1 : kFloatChannels;
    RunImageRows((channels + together - 1) / together, [&](int first, int last) {
        if (first > last) return;
        const auto sums = MakeSums(mask.kernel, mask.reach, to);
        Buffer<double> row(static_cast<std::size_t>(to.Width) + kTile, "library/K7Image");
        if (!sums || !row) return ReportMessage(kNoKernelMessage);
        row.Zero(); // the last samples are sharpened together with what stands behind them
        const int end = std::min((last + 1) * together, channels);
        for (int c = first * together; c < end && !AbortRequested(); ++c) {
            sums->Start(from, c);
            for (int y = 0; y < to.Height && !AbortRequested(); ++y) {
                sums->Row(y, row.data());
                SharpenRow(row.data(), mask.Divisor(), mask.amount, to.Width, from.Rows[y] + c,
                           to.Rows[y] + c);
            }
        }
    });
}

bool IsSmall(const Mask& mask) {
    return mask.kernel.Sum <= TableSums::kMostWeight || 64 * mask.reach.Places() <= TableSums::kMostWeight;
}

/// All channels of some rows for each thread; the pictures are two.
void SharpenRows(const Mask& mask, const K7Image& from, const K7Image& to) {
    float amounts[kTile];
    for (int i = 0; i < kTile; ++i)
        amounts[i] = mask.withAlpha || i % K7Image::Channels < 3 ? mask.amount : 0.0f; // 0 keeps the word
    RunImageRows(to.Height, [&](int first, int last) {
        if (first > last) return;
        TableSums sums(mask.kernel, mask.reach, to.Width);
        if (!sums) return ReportMessage(kNoKernelMessage);
        sums.Start(from, first);
        for (int y = first; y <= last && !AbortRequested(); ++y)
            SharpenPixels(sums.Row(y), mask.Divisor(), amounts, to.Width * K7Image::Channels, from.Rows[y],
                          to.Rows[y]);
    });
}

} // namespace

template <class Sample>
void PictureK7<Sample>::UnsharpMask(float radius, float amount, const PictureK7* source, bool withAlpha) {
    const GaussianKernel2D kernel = MakeGaussianKernel2D(ClampedRadius(radius, *this));
    const KernelReach reach = {std::min(kernel.Size / 2, Width - 1), std::min(kernel.Size / 2, Height - 1)};
    const Mask mask = {kernel, reach, FiniteAmount(amount), withAlpha};
    if constexpr (SampleTraits<Sample>::kWords)
        if (IsSmall(mask)) {
            const auto copy = source ? nullptr : MakeCopy(*this);
            if (!source && !copy) return ReportMessage(kNoKernelMessage);
            return SharpenRows(mask, source ? *source : *copy, *this);
        }
    SharpenChannels(mask, source ? *source : *this, *this);
    if (!withAlpha && source) CopyAlpha(source);
}

template void K7Image::UnsharpMask(float, float, const K7Image*, bool);
template void FloatImageK7::UnsharpMask(float, float, const FloatImageK7*, bool);

} // namespace k7
