#include "library/K7Image.h"

#include "baselib/Buffer.h"
#include "baselib/Vector.h"
#include "library/Chunks.h"
#include "library/Dot.h"
#include "library/GaussianKernel.h"
#include "library/Lines.h"

#include <algorithm>
#include <type_traits>

namespace k7 {

namespace {

constexpr const char* kSource = "library/K7Image";

/// 8 neighbouring columns, a cache line, are filtered in one go.
constexpr int kBlockLines = 8;

/// Results that are summed at once.
constexpr int kTile = 64;

/// What lines and weights are kept in: words in 16 bits, and with a sign, as the dot products want them.
template <class Sample>
using Kept = std::conditional_t<SampleTraits<Sample>::kWords, std::int16_t, float>;

/// A kernel cut to what can matter on a line of some length. The middle weight may not fit 16 bits; what is
/// beyond them stands apart.
template <class Sample>
struct LineKernel {
    /// Places further out than the line is long lie beyond its end from every pixel. With `dupEdges` they
    /// all see the edge pixel, and the outermost place within the line takes their weight.
    LineKernel(const GaussianKernel1D& kernel, int length, bool dupEdges) {
        const int whole = kernel.Taps / 2;
        half = std::min(whole, length - 1);
        const auto taps = static_cast<std::size_t>(2 * half + 1);
        blocks = DotBlocks(taps);
        weights = Buffer<Kept<Sample>>(blocks * kDotBlock, kSource, __LINE__);
        if (!weights) return;
        weights.Zero();

        const std::uint32_t* middle = kernel.Weights.data() + whole;
        std::uint32_t left = GaussianKernel1D::Sum;
        for (int i = 1; i <= half; ++i) {
            std::uint32_t weight = middle[i];
            if (i == half && dupEdges)
                for (int beyond = i + 1; beyond <= whole; ++beyond) weight += middle[beyond];
            weights[half - i] = weights[half + i] = static_cast<Kept<Sample>>(weight);
            left -= 2 * weight;
        }
        const std::uint32_t centre = dupEdges ? left : middle[0];
        weights[half] = static_cast<Kept<Sample>>(std::min<std::uint32_t>(centre, kMostWeight));
        rest = centre - static_cast<std::uint32_t>(weights[half]);
    }

    static constexpr std::uint32_t kMostWeight =
        SampleTraits<Sample>::kWords ? 32767 : std::uint32_t{GaussianKernel1D::Sum};
    Buffer<Kept<Sample>> weights; ///< 2 half + 1 of them, zeros behind; null: allocation failed
    std::size_t blocks = 0;
    int half = 0;
    std::uint32_t rest = 0; ///< of the middle weight
};

// A line is blurred in place: results take the place of samples of which later ones have no need. The line's
// own samples begin at `half`.

void BlurLine(const LineKernel<u16>& kernel, std::int16_t* line, int length) {
    std::int32_t sums[kTile];
    for (int n = 0; n < length; n += kTile, line += kTile) {
        const int count = std::min(kTile, length - n);
        Dots(line, 1, kernel.weights.data(), kernel.blocks, count, sums);
        for (int i = 0; i < count; ++i) {
            const std::uint32_t sum = static_cast<std::uint32_t>(sums[i]) +
                                      kernel.rest * static_cast<std::uint32_t>(line[i + kernel.half]);
            line[i] = static_cast<std::int16_t>(sum >> GaussianKernel1D::Shift);
        }
    }
}

/// Both samples of a distance share a weight, and the small weights of the ends are added first.
K7_WIDE_VECTORS void BlurLine(const LineKernel<float>& kernel, float* line, int length) {
    constexpr float one = 1.0f / GaussianKernel1D::Sum;
    for (int n = 0; n < length; n += kTile, line += kTile) {
        float sums[kTile] = {};
        const float* before = line;
        const float* behind = line + static_cast<std::ptrdiff_t>(2) * kernel.half;
        for (const float* weight = kernel.weights.data(); before != behind; ++before, --behind, ++weight)
            for (int i = 0; i < kTile; ++i) sums[i] += (before[i] + behind[i]) * *weight;
        const float middle = kernel.weights[static_cast<std::size_t>(kernel.half)];
        for (int i = 0; i < kTile; ++i) sums[i] = (sums[i] + before[i] * middle) * one;
        std::copy_n(sums, std::min(kTile, length - n), line);
    }
}

/// Some lines of a picture, each channel of a line in one piece with room for the kernel on both sides.
template <class Sample>
class LineStore {
public:
    LineStore(const LineKernel<Sample>& kernel, const Lines& lines, int channels)
        : lines_(lines)
        , channels_(channels)
        , half_(kernel.half) {
        // An odd number of cache lines keeps the pieces from competing for the same places in the cache.
        const std::size_t samples =
            static_cast<std::size_t>(lines.length) + kernel.blocks * kDotBlock + kTile;
        room_ = (samples + 63) / 64 * 64 + 32;
        store_ = Buffer<Kept<Sample>>(room_ * kBlockLines * K7Image::Channels, kSource, __LINE__);
        store_.Zero();
    }
    explicit operator bool() const { return static_cast<bool>(store_); }

    Kept<Sample>* Line(int i, int channel) const {
        return store_.data() + static_cast<std::size_t>(i * K7Image::Channels + channel) * room_;
    }

    void Load(const Sample* pixels, int count) const {
        for (int n = 0; n < lines_.length; ++n, pixels += lines_.along)
            for (int i = 0; i < count; ++i)
                for (int c = 0; c < channels_; ++c)
                    Line(i, c)[half_ + n] = static_cast<Kept<Sample>>(pixels[i * lines_.across + c]);
    }

    /// Fills both margins of a line.
    void Margins(Kept<Sample>* line, bool dupEdges) const {
        Kept<Sample>* end = line + half_ + lines_.length;
        std::fill_n(line, half_, dupEdges ? line[half_] : Kept<Sample>{0});
        std::fill_n(end, half_, dupEdges ? end[-1] : Kept<Sample>{0});
    }

    void Save(Sample* pixels, int count) const {
        for (int n = 0; n < lines_.length; ++n, pixels += lines_.along)
            for (int i = 0; i < count; ++i)
                for (int c = 0; c < channels_; ++c)
                    pixels[i * lines_.across + c] = static_cast<Sample>(Line(i, c)[n]);
    }

private:
    Lines lines_;
    int channels_;
    int half_;
    std::size_t room_ = 0;
    Buffer<Kept<Sample>> store_;
};

/// One pass over `count` lines. `target` may be `source`.
template <class Sample>
void BlurLines(float radius, bool dupEdges, const Lines& lines, int count, int channels,
               const PictureK7<Sample>& source, const PictureK7<Sample>& target) {
    const GaussianKernel1D whole = MakeGaussianKernel1D(radius);
    if (!whole.Weights) return ReportMessage(kNoKernelMessage);
    const LineKernel<Sample> kernel(whole, lines.length, dupEdges);
    if (!kernel.weights) return ReportMessage(kNoKernelMessage);
    RunImageRows(count, [&](int firstLine, int lastLine) {
        const LineStore<Sample> store(kernel, lines, channels);
        if (!store) return ReportMessage(kNoKernelMessage);
        for (int first = firstLine; first <= lastLine && !AbortRequested(); first += kBlockLines) {
            const int used = std::min(kBlockLines, lastLine + 1 - first);
            const std::ptrdiff_t at = first * lines.across;
            store.Load(source.Pixels + at, used);
            for (int i = 0; i < used; ++i)
                for (int c = 0; c < channels; ++c) {
                    store.Margins(store.Line(i, c), dupEdges);
                    BlurLine(kernel, store.Line(i, c), lines.length);
                }
            store.Save(target.Pixels + at, used);
        }
    });
}

} // namespace

template <class Sample>
void PictureK7<Sample>::GaussianExactRows(float radius, bool dupEdges, const PictureK7* source,
                                          bool withAlpha) {
    BlurLines(radius, dupEdges, Lines::Rows(*this), Height, withAlpha ? 4 : 3, source ? *source : *this,
              *this);
}

template <class Sample>
void PictureK7<Sample>::GaussianExactColumns(float radius, bool dupEdges, const PictureK7* source,
                                             bool withAlpha) {
    BlurLines(radius, dupEdges, Lines::Columns(*this), Width, withAlpha ? 4 : 3, source ? *source : *this,
              *this);
}

template <class Sample>
void PictureK7<Sample>::GaussianExact(float radius, bool dupEdges, const PictureK7* source, int direction,
                                      bool withAlpha) {
    if (direction == 0 || direction == 2) GaussianExactRows(radius, dupEdges, source, withAlpha);
    if (direction == 1) GaussianExactColumns(radius, dupEdges, source, withAlpha);
    if (direction == 2) GaussianExactColumns(radius, dupEdges, nullptr, withAlpha);
}

template void K7Image::GaussianExact(float, bool, const K7Image*, int, bool);
template void FloatImageK7::GaussianExact(float, bool, const FloatImageK7*, int, bool);

} // namespace k7
