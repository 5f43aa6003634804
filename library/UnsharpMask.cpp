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
    const double held = rounded > 0.0 ? rounded : 0.0;
    return static_cast<u16>(static_cast<int>(held < 32767.0 ? held : 32767.0));
}

/// Words of a row that are sharpened together, as vectors.
constexpr int kTile = 64;

/// One row of a channel; `target` may be `source`. `sums` goes on for kTile more than the row.
K7_WIDE_VECTORS void SharpenRow(const double* sums, double divisor, float amount, int width,
                                const u16* source, u16* target) {
    u16 words[kTile] = {};
    for (int x = 0; x < width; x += kTile, sums += kTile) {
        const int count = std::min(kTile, width - x);
        for (int i = 0; i < count; ++i, source += K7Image::Channels) words[i] = *source;
        for (int i = 0; i < kTile; ++i) words[i] = Sharpened(words[i], sums[i], divisor, amount);
        for (int i = 0; i < count; ++i, target += K7Image::Channels) *target = words[i];
    }
}

/// The largest sum of words times weights that a picture can give.
double MostOf(const K7Image& image) {
    return 64.0 * kFullScale * image.Width * image.Height;
}

/// Holds a radius to one at which the kernel's sum, 83 times its square, exceeds that: there, as at every
/// larger one, the blur is 0.
float HeldRadius(float radius, const K7Image& image) {
    return std::min(radius, static_cast<float>(2.0 + std::sqrt(MostOf(image) / 80.0)));
}

/// Infinite amounts as the largest, so that no difference stays none; no number as 0.
float HeldAmount(float amount) {
    constexpr float most = std::numeric_limits<float>::max();
    return std::isnan(amount) ? 0.0f : std::clamp(amount, -most, most);
}

std::unique_ptr<KernelSums> MakeSums(const GaussianKernel2D& kernel, const K7Image& image) {
    KernelReach reach = {std::min(kernel.Size / 2, image.Width - 1),
                         std::min(kernel.Size / 2, image.Height - 1)};
    if (static_cast<double>(kernel.Sum) > MostOf(image)) reach = {0, 0}; // any sum will do
    const bool small = kernel.Sum <= kMostDotWeight || 64 * reach.Places() <= kMostDotWeight;
    return (small ? MakeDotSums : MakeTransformSums)(kernel, reach, image.Width, image.Height);
}

} // namespace

template <>
void K7Image::UnsharpMask(float radius, float amount, const K7Image* source, bool withAlpha) {
    const GaussianKernel2D kernel = MakeGaussianKernel2D(HeldRadius(radius, *this));
    const std::unique_ptr<KernelSums> sums = MakeSums(kernel, *this);
    Buffer<double> row(static_cast<std::size_t>(Width) + kTile, "library/K7Image", __LINE__);
    if (!sums || !row) return ReportMessage(kNoKernelMessage);
    row.Zero(); // the last words are sharpened together with what stands behind them

    const K7Image& from = source ? *source : *this;
    const double divisor = static_cast<double>(kernel.Sum);
    const float held = HeldAmount(amount);
    for (int c = 0; c < (withAlpha ? 4 : 3) && !AbortRequested(); ++c) {
        sums->Start(from, c);
        for (int y = 0; y < Height && !AbortRequested(); ++y) {
            sums->Row(y, row.data());
            SharpenRow(row.data(), divisor, held, Width, from.Rows[y] + c, Rows[y] + c);
        }
    }
    if (!withAlpha && source) CopyAlpha(source);
}

} // namespace k7
