#include "library/K7Image.h"

#include "baselib/Buffer.h"
#include "library/Chunks.h"
#include "library/Dot.h"
#include "library/GaussianKernel.h"
#include "library/Lines.h"

#include <algorithm>

namespace k7 {

namespace {

constexpr const char* kSource = "library/K7Image";

/// 8 neighbouring columns, a cache line, are filtered in one go.
constexpr int kBlockLines = 8;

/// A kernel cut to what can matter on a line of some length. Its middle weight may not fit 16 bits and is
/// split in two.
struct LineKernel {
    /// Places further out than the line is long lie beyond its end from every pixel. With `dupEdges` they
    /// all see the edge pixel, and the outermost place within the line takes their weight.
    LineKernel(const GaussianKernel1D& kernel, int length, bool dupEdges) {
        const int whole = kernel.Taps / 2;
        half = std::min(whole, length - 1);
        const auto taps = static_cast<std::size_t>(2 * half + 1);
        blocks = DotBlocks(taps);
        weights = Buffer<std::int16_t>(blocks * kDotBlock, kSource, __LINE__);
        if (!weights) return;
        weights.Zero();

        const std::uint32_t* middle = kernel.Weights.data() + whole;
        std::uint32_t left = GaussianKernel1D::Sum;
        for (int i = 1; i <= half; ++i) {
            std::uint32_t weight = middle[i];
            if (i == half && dupEdges)
                for (int beyond = i + 1; beyond <= whole; ++beyond) weight += middle[beyond];
            weights[half - i] = weights[half + i] = static_cast<std::int16_t>(weight);
            left -= 2 * weight;
        }
        const std::uint32_t centre = dupEdges ? left : middle[0];
        weights[half] = static_cast<std::int16_t>(std::min<std::uint32_t>(centre, 32767));
        rest = centre - static_cast<std::uint32_t>(weights[half]);
    }

    Buffer<std::int16_t> weights; ///< 2 half + 1 of them, zeros behind; null: there was no memory
    std::size_t blocks = 0;
    int half = 0;
    std::uint32_t rest = 0; ///< of the middle weight
};

/// Blurs a line in place: results take the place of words of which later ones have no need. The line's own
/// words begin at word `half`.
void BlurLine(const LineKernel& kernel, std::int16_t* line, int length) {
    constexpr int tile = 64;
    std::int32_t sums[tile];
    for (int n = 0; n < length; n += tile, line += tile) {
        const int count = std::min(tile, length - n);
        Dots(line, 1, kernel.weights.data(), kernel.blocks, count, sums);
        for (int i = 0; i < count; ++i) {
            const std::uint32_t sum = static_cast<std::uint32_t>(sums[i]) +
                                      kernel.rest * static_cast<std::uint32_t>(line[i + kernel.half]);
            line[i] = static_cast<std::int16_t>(sum >> GaussianKernel1D::Shift);
        }
    }
}

/// Some lines of a picture, each channel of a line in one piece with room for the kernel on both sides.
class LineStore {
public:
    LineStore(const LineKernel& kernel, const Lines& lines, int channels)
        : lines_(lines)
        , channels_(channels)
        , half_(kernel.half) {
        // An odd number of cache lines keeps the pieces from competing for the same places in the cache.
        const std::size_t words = static_cast<std::size_t>(lines.length) + kernel.blocks * kDotBlock;
        room_ = (words + 63) / 64 * 64 + 32;
        store_ = Buffer<std::int16_t>(room_ * kBlockLines * K7Image::Channels, kSource, __LINE__);
        store_.Zero();
    }
    explicit operator bool() const { return static_cast<bool>(store_); }

    std::int16_t* Line(int i, int channel) const {
        return store_.data() + static_cast<std::size_t>(i * K7Image::Channels + channel) * room_;
    }

    void Load(const u16* pixels, int count) const {
        for (int n = 0; n < lines_.length; ++n, pixels += lines_.along)
            for (int i = 0; i < count; ++i)
                for (int c = 0; c < channels_; ++c)
                    Line(i, c)[half_ + n] = static_cast<std::int16_t>(pixels[i * lines_.across + c]);
    }

    /// Fills both margins of a line.
    void Margins(std::int16_t* line, bool dupEdges) const {
        std::int16_t* end = line + half_ + lines_.length;
        std::fill_n(line, half_, dupEdges ? line[half_] : std::int16_t{0});
        std::fill_n(end, half_, dupEdges ? end[-1] : std::int16_t{0});
    }

    void Save(u16* pixels, int count) const {
        for (int n = 0; n < lines_.length; ++n, pixels += lines_.along)
            for (int i = 0; i < count; ++i)
                for (int c = 0; c < channels_; ++c)
                    pixels[i * lines_.across + c] = static_cast<u16>(Line(i, c)[n]);
    }

private:
    Lines lines_;
    int channels_;
    int half_;
    std::size_t room_ = 0;
    Buffer<std::int16_t> store_;
};

/// One pass over `count` lines. `target` may be `source`.
void BlurLines(float radius, bool dupEdges, const Lines& lines, int count, int channels,
               const K7Image& source, const K7Image& target) {
    const GaussianKernel1D whole = MakeGaussianKernel1D(radius);
    if (!whole.Weights) return ReportMessage(kNoKernelMessage);
    const LineKernel kernel(whole, lines.length, dupEdges);
    const LineStore store(kernel, lines, channels);
    if (!kernel.weights || !store) return ReportMessage(kNoKernelMessage);

    for (int first = 0; first < count && !AbortRequested(); first += kBlockLines) {
        const int used = std::min(kBlockLines, count - first);
        const std::ptrdiff_t at = first * lines.across;
        store.Load(source.Pixels + at, used);
        for (int i = 0; i < used; ++i)
            for (int c = 0; c < channels; ++c) {
                store.Margins(store.Line(i, c), dupEdges);
                BlurLine(kernel, store.Line(i, c), lines.length);
            }
        store.Save(target.Pixels + at, used);
    }
}

} // namespace

template <>
void K7Image::GaussianExactRows(float radius, bool dupEdges, const K7Image* source, bool withAlpha) {
    BlurLines(radius, dupEdges, Lines::Rows(*this), Height, withAlpha ? 4 : 3, source ? *source : *this,
              *this);
}

template <>
void K7Image::GaussianExactColumns(float radius, bool dupEdges, const K7Image* source, bool withAlpha) {
    BlurLines(radius, dupEdges, Lines::Columns(*this), Width, withAlpha ? 4 : 3, source ? *source : *this,
              *this);
}

template <>
void K7Image::GaussianExact(float radius, bool dupEdges, const K7Image* source, int direction,
                            bool withAlpha) {
    if (direction == 0 || direction == 2) GaussianExactRows(radius, dupEdges, source, withAlpha);
    if (direction == 1) GaussianExactColumns(radius, dupEdges, source, withAlpha);
    if (direction == 2) GaussianExactColumns(radius, dupEdges, nullptr, withAlpha);
}

} // namespace k7
