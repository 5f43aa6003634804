#include "library/K7Image.h"

#include "baselib/Buffer.h"
#include "baselib/Vector.h"
#include "library/Chunks.h"
#include "library/GaussianKernel.h"
#include "library/Lines.h"
#include "library/PairSums.h"

#include <algorithm>
#include <type_traits>

namespace k7 {

namespace {

constexpr const char* kSource = "library/K7Image";

/// Results that are summed at once.
constexpr int kTile = kPairTile;

/// Columns that are blurred side by side: as many as make a tile.
constexpr int kColumns = kTile / K7Image::Channels;

/// What lines and weights are kept in: words in 16 bits with a sign, as the products of pairs want them.
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
        weights = Buffer<Kept<Sample>>(static_cast<std::size_t>(2 * half + 2), kSource);
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
        if constexpr (SampleTraits<Sample>::kWords) {
            pairs = Buffer<std::int32_t>(static_cast<std::size_t>(half) + 1, kSource);
            for (std::size_t i = 0; i < pairs.size(); ++i)
                pairs[i] = weights[2 * i] | weights[2 * i + 1] << 16;
        }
    }
    /// False: allocation failed.
    explicit operator bool() const { return weights && (pairs || !SampleTraits<Sample>::kWords); }

    static constexpr std::uint32_t kMostWeight =
        SampleTraits<Sample>::kWords ? 32767 : std::uint32_t{GaussianKernel1D::Sum};
    Buffer<Kept<Sample>> weights; ///< 2 half + 1 of them and a zero
    Buffer<std::int32_t> pairs;   ///< of words' weights
    int half = 0;
    std::uint32_t rest = 0; ///< of the middle weight
};

/// Neighbouring lines side by side, contiguous, with room for the kernel at both ends: place n of all lines
/// is followed by place n + 1 of all. Results take the place of samples of which later ones have no need,
/// from the front of the first margin on.
template <class Sample>
class LineStore {
public:
    LineStore(const LineKernel<Sample>& kernel, const Lines& lines, int count)
        : kernel_(kernel)
        , lines_(lines)
        , apart_(static_cast<std::size_t>(count) * K7Image::Channels)
        , tiles_((static_cast<std::size_t>(lines.length) * apart_ + kTile - 1) / kTile)
        , kept_(tiles_ * kTile + (2 * static_cast<std::size_t>(kernel.half) + 2) * apart_, kSource) {
        kept_.Zero();
        if constexpr (SampleTraits<Sample>::kWords)
            pairs_ = Buffer<std::int32_t>(kept_.size() - apart_ + kToCacheLine<std::int32_t>, kSource);
    }
    explicit operator bool() const { return kept_ && (pairs_ || !SampleTraits<Sample>::kWords); }

    /// Takes as many lines as lie from `pixels` on, with their margins.
    void Load(const Sample* pixels, int count, bool dupEdges) {
        const std::size_t margin = static_cast<std::size_t>(kernel_.half) * apart_;
        Kept<Sample>* const first = kept_.data() + margin;
        ForRuns(count, [&](std::ptrdiff_t at, std::size_t place, int samples) {
            std::copy_n(pixels + at, samples, first + place);
        });
        Kept<Sample>* to = first + static_cast<std::size_t>(lines_.length) * apart_;
        for (int n = 1; n <= kernel_.half; ++n, to += apart_) {
            Kept<Sample>* const before = first - static_cast<std::size_t>(n) * apart_;
            if (dupEdges) {
                std::copy_n(first, apart_, before);
                std::copy_n(to - apart_, apart_, to);
            } else {
                std::fill_n(before, apart_, Kept<Sample>{0});
                std::fill_n(to, apart_, Kept<Sample>{0});
            }
        }
    }

    void Blur();

    void Save(Sample* pixels, int count, int channels) const {
        ForRuns(count, [&](std::ptrdiff_t at, std::size_t place, int samples) {
            const Kept<Sample>* from = kept_.data() + place;
            Sample* const to = pixels + at;
            if (channels == K7Image::Channels)
                for (int i = 0; i < samples; ++i) to[i] = static_cast<Sample>(from[i]);
            else
                for (int i = 0; i < samples; i += K7Image::Channels)
                    for (int c = 0; c < channels; ++c) to[i + c] = static_cast<Sample>(from[i + c]);
        });
    }

private:
    /// Calls run(offset in the picture, offset from the first place, samples) for what lies contiguous in
    /// both.
    template <class Run>
    void ForRuns(int count, Run run) const {
        const int samples = count * K7Image::Channels;
        if (lines_.along == samples && apart_ == static_cast<std::size_t>(samples))
            return run(0, 0, samples * lines_.length);
        for (int n = 0; n < lines_.length; ++n)
            run(n * lines_.along, static_cast<std::size_t>(n) * apart_, samples);
    }

    const LineKernel<Sample>& kernel_;
    Lines lines_;
    std::size_t apart_; ///< samples from a place to the next
    std::size_t tiles_;
    Buffer<Kept<Sample>> kept_;
    Buffer<std::int32_t> pairs_; ///< of words that follow each other on a line
};

template <>
void LineStore<u16>::Blur() {
    const auto apart = static_cast<std::ptrdiff_t>(apart_);
    const std::int32_t* pairs = FromCacheLine(pairs_);
    kJoinPairs.Chosen()(kept_.data(), apart, static_cast<int>(kept_.size() - apart_), FromCacheLine(pairs_));
    const std::int32_t* const weights = kernel_.pairs.data();
    AddPairSums* const add = kAddPairs.Chosen();
    std::int16_t* results = kept_.data();
    for (std::size_t tile = 0; tile < tiles_; ++tile, results += kTile, pairs += kTile) {
        const std::int16_t* const middle = results + kernel_.half * apart;
        std::int32_t sums[kTile];
        for (int i = 0; i < kTile; ++i)
            sums[i] = static_cast<std::int32_t>(kernel_.rest * static_cast<std::uint32_t>(middle[i]));
        add(pairs, 2 * apart, weights, kernel_.half + 1, kTile, sums);
        for (int i = 0; i < kTile; ++i)
            results[i] =
                static_cast<std::int16_t>(static_cast<std::uint32_t>(sums[i]) >> GaussianKernel1D::Shift);
    }
}

/// Both samples of a distance share a weight, and the small weights of the ends are added first.
K7_WIDE_VECTORS void BlurTile(const float* weights, int half, std::ptrdiff_t apart, float* line) {
    constexpr float one = 1.0f / GaussianKernel1D::Sum;
    float sums[kTile] = {};
    const float* before = line;
    const float* behind = line + 2 * half * apart;
    for (; before != behind; before += apart, behind -= apart, ++weights)
        for (int i = 0; i < kTile; ++i) sums[i] += (before[i] + behind[i]) * *weights;
    for (int i = 0; i < kTile; ++i) sums[i] = (sums[i] + before[i] * *weights) * one;
    std::copy_n(sums, kTile, line);
}

template <>
void LineStore<float>::Blur() {
    for (std::size_t tile = 0; tile < tiles_; ++tile)
        BlurTile(kernel_.weights.data(), kernel_.half, static_cast<std::ptrdiff_t>(apart_),
                 kept_.data() + tile * kTile);
}

/// One pass over `count` lines, `together` at a time. `target` may be `source`.
template <class Sample>
void BlurLines(float radius, bool dupEdges, const Lines& lines, int count, int together, int channels,
               const PictureK7<Sample>& source, const PictureK7<Sample>& target) {
    const GaussianKernel1D whole = MakeGaussianKernel1D(radius);
    if (!whole.Weights) return ReportMessage(kNoKernelMessage);
    const LineKernel<Sample> kernel(whole, lines.length, dupEdges);
    if (!kernel) return ReportMessage(kNoKernelMessage);
    RunImageRows(count, [&](int firstLine, int lastLine) {
        LineStore<Sample> store(kernel, lines, together);
        if (!store) return ReportMessage(kNoKernelMessage);
        for (int first = firstLine; first <= lastLine && !AbortRequested(); first += together) {
            const int used = std::min(together, lastLine + 1 - first);
            const std::ptrdiff_t at = first * lines.across;
            store.Load(source.Pixels + at, used, dupEdges);
            store.Blur();
            store.Save(target.Pixels + at, used, channels);
        }
    });
}

} // namespace

template <class Sample>
void PictureK7<Sample>::GaussianExactRows(float radius, bool dupEdges, const PictureK7* source,
                                          bool withAlpha) {
    BlurLines(radius, dupEdges, Lines::Rows(*this), Height, 1, withAlpha ? 4 : 3, source ? *source : *this,
              *this);
}

template <class Sample>
void PictureK7<Sample>::GaussianExactColumns(float radius, bool dupEdges, const PictureK7* source,
                                             bool withAlpha) {
    BlurLines(radius, dupEdges, Lines::Columns(*this), Width, kColumns, withAlpha ? 4 : 3,
              source ? *source : *this, *this);
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
