#include "library/K7Image.h"

#include "baselib/Buffer.h"
#include "baselib/Denormals.h"
#include "baselib/Vector.h"
#include "library/Chunks.h"
#include "library/Lines.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace k7 {

namespace {

/// Radii are clamped to 65536 pixels: the further beyond, the fewer digits of the gain are left in double
/// precision, and the padding outgrows every picture.
constexpr double kMostSigma = 16384.0;

/// Lines times channels filtered side by side: enough independent recursions to hide the latency of one, and
/// 8 neighbouring columns, a cache line, at a time.
constexpr int kLanes = 32;

double SigmaOf(float radius) {
    if (std::isnan(radius)) return SigmaOf(0.0f);
    return std::clamp(static_cast<double>(radius) * 0.25 + 0.05, -kMostSigma, kMostSigma);
}

int PadOf(double sigma) {
    return std::max(Trunc(sigma) + 4, 0);
}

/// Young and van Vliet, "Recursive implementation of the Gaussian filter", Signal Processing 44 (1995),
/// equations 8 and 11, with b1, b2, b3 divided by b0 beforehand.
struct Coefficients {
    explicit Coefficients(double sigma) {
        double q = sigma * 2.0 * 0.3834085807;
        if (sigma >= 2.5)
            q = sigma * 0.98711 - 0.9633;
        else if (sigma >= 0.5)
            q = 3.97156 - 4.14554 * std::sqrt(1.0 - sigma * 0.26891);
        const double q2 = q * q;
        const double q3 = q * q * q;
        const double b0 = 1.57825 + 2.44413 * q + 1.4281 * q2 + 0.422205 * q3;
        c1 = (2.44413 * q + 2.85619 * q2 + 1.26661 * q3) / b0;
        c2 = (-1.4281 * q2 - 1.26661 * q3) / b0;
        c3 = 0.422205 * q3 / b0;
        B = 1.0 - (c1 + c2 + c3);
    }
    double c1, c2, c3, B;
};

/// Neighbouring lines that are worked on together, so that memory is read in order along columns too. Where
/// fewer lines than that are left, the last one is there several times over.
template <int lines>
class LineBlock {
public:
    LineBlock(const Lines& of, int first, int last) {
        for (int i = 0; i < lines; ++i) offset_[i] = std::min(first + i, last) * of.across;
    }
    /// Word of the store at which line `i` of the block has its sample, seen from line 0 of the picture.
    std::ptrdiff_t operator[](int i) const { return offset_[i]; }

private:
    std::ptrdiff_t offset_[lines];
};

/// One step of the recursion on all lanes. `previous` is the distance to the result before `out`, in doubles:
/// negative on the way forward, positive on the way back. `out` may be `in`.
K7_ALWAYS_INLINE void Step(const Coefficients& k, const double* in, double* out, std::ptrdiff_t previous) {
    const double* one = out + previous;
    const double* two = one + previous;
    const double* three = two + previous;
#pragma GCC ivdep
    for (int i = 0; i < kLanes; ++i) out[i] = k.B * in[i] + k.c1 * one[i] + k.c2 * two[i] + k.c3 * three[i];
}

/// Truncates results to words. Adding 3 x 2^35 leaves a double whose last bit is worth 1/65536, so that the
/// integer part stands in bits 16 to 31.
K7_ALWAYS_INLINE void ToSamples(const double* values, u16* words) {
    for (int i = 0; i < kLanes; ++i) {
        double value = values[i] > 0.0 ? values[i] : 0.0;
        value = value < 32767.0 ? value : 32767.0;
        words[i] = static_cast<u16>(std::bit_cast<std::uint64_t>(value + 103079215104.0) >> 16);
    }
}

K7_ALWAYS_INLINE void ToSamples(const double* values, float* samples) {
    for (int i = 0; i < kLanes; ++i) samples[i] = static_cast<float>(values[i]);
}

/// The samples of one pass over a chunk's lines, from `source` to `target` (which may be one store).
template <class Sample>
struct Pass {
    Lines lines;
    const Sample* source; ///< at the first channel filtered
    Sample* target;
    int channels; ///< 1, 3 or 4
    double sigma;

    int Padded() const { return lines.length + 3 * PadOf(sigma); }
};

/// Filters blocks of lines, `step` channels of each side by side, and writes the first `written` of them. A
/// block is read to its end before the first sample of it is written.
template <class Sample, int step, int written>
class BlockFilter {
public:
    /// `line` has room for Padded() samples and three more.
    BlockFilter(const Pass<Sample>& pass, double* line)
        : pass_(pass)
        , k_(pass.sigma)
        , pad_(PadOf(pass.sigma))
        , samples_(pass.lines.length)
        , padded_(pass.Padded())
        , line_(line) {}

    K7_ALWAYS_INLINE void Filter(int first, int last) {
        for (int i = first; i <= last && !AbortRequested(); i += kLines) {
            const Block block(pass_.lines, i, last);
            Forward(block);
            Backward(block);
        }
    }

private:
    static constexpr int kLines = kLanes / step;
    using Block = LineBlock<kLines>;

    /// From zero, over the first sample, the line and the last sample.
    K7_ALWAYS_INLINE void Forward(const Block& block) {
        double in[kLanes];
        Load(block, 0, in);
        std::fill_n(line_, 3 * kLanes, 0.0);
        for (int n = 3; n < padded_ - 3; ++n) {
            if (n >= pad_ && n < pad_ + samples_) Load(block, n - pad_, in);
            Step(k_, in, At(n), -kLanes);
        }
    }

    /// From zero, in the place of what the way forward gave.
    K7_ALWAYS_INLINE void Backward(const Block& block) {
        for (int n = padded_ - 1; n >= pad_; --n) {
            if (n < padded_ - 3)
                Step(k_, At(n), At(n), kLanes);
            else
                std::fill_n(At(n), kLanes, 0.0);
            if (n < pad_ + samples_) Store(block, n - pad_, At(n));
        }
    }

    K7_ALWAYS_INLINE void Load(const Block& block, int n, double* values) const {
        const Sample* sample = pass_.source + n * pass_.lines.along;
        Sample samples[kLanes];
        for (int i = 0; i < kLines; ++i)
            std::memcpy(samples + i * step, sample + block[i], step * sizeof(Sample));
        for (int i = 0; i < kLanes; ++i) values[i] = samples[i];
        Prefetch(block, pass_.source + std::min(n + kAhead, samples_ - 1) * pass_.lines.along);
    }

    K7_ALWAYS_INLINE void Store(const Block& block, int n, const double* values) const {
        Sample* sample = pass_.target + n * pass_.lines.along;
        Sample samples[kLanes];
        ToSamples(values, samples);
        for (int i = 0; i < kLines; ++i)
            std::memcpy(sample + block[i], samples + i * step, written * sizeof(Sample));
        Prefetch(block, pass_.target + std::max(n - kAhead, 0) * pass_.lines.along);
    }

    /// Samples between the current one and the one that is prefetched: the processor sees no pattern
    /// in the samples of columns, which lie pages apart.
    static constexpr int kAhead = 12;
    K7_ALWAYS_INLINE static void Prefetch(const Block& block, const Sample* sample) {
        __builtin_prefetch(sample + block[0]);
        __builtin_prefetch(sample + block[kLines - 1]);
    }

    K7_ALWAYS_INLINE double* At(int n) const { return line_ + static_cast<std::ptrdiff_t>(n) * kLanes; }

    const Pass<Sample>& pass_;
    const Coefficients k_;
    const int pad_, samples_, padded_;
    double* const line_;
};

template <class Sample>
K7_WIDE_VECTORS void FilterLines(const Pass<Sample>& pass, int first, int last, double* line) {
    // What they would add lies far below the last digit of a float, let alone of a word.
    const NoDenormals noDenormals;
    if (pass.channels == 1)
        BlockFilter<Sample, 1, 1>(pass, line).Filter(first, last);
    else if (pass.channels == 3)
        BlockFilter<Sample, 4, 3>(pass, line).Filter(first, last);
    else
        BlockFilter<Sample, 4, 4>(pass, line).Filter(first, last);
}

template <class Sample>
void CopyLines(const Pass<Sample>& pass, int first, int last) {
    for (int i = first; i <= last; ++i)
        for (int n = 0; n < pass.lines.length; ++n) {
            const std::ptrdiff_t at = i * pass.lines.across + n * pass.lines.along;
            std::memmove(pass.target + at, pass.source + at,
                         static_cast<std::size_t>(pass.channels) * sizeof(Sample));
        }
}

/// One pass over a picture's rows or columns, on all threads; in place where the source is the picture
/// itself.
template <class Sample>
void RunPass(Lines lines, int count, const Sample* source, Sample* target, int channels, double sigma) {
    const Pass<Sample> pass = {lines, source, target, channels, sigma};
    RunImageRows(count, [&](int first, int last) {
        if (first > last) return;
        const Buffer<double> line((static_cast<std::size_t>(pass.Padded()) + 3) * kLanes, "library/K7Image");
        if (line)
            FilterLines(pass, first, last, line.data());
        else
            CopyLines(pass, first, last);
    });
}

template <class Sample>
void RunPasses(PictureK7<Sample>& image, float radius, const PictureK7<Sample>* source, int direction,
               int firstChannel, int endChannel) {
    const double sigma = SigmaOf(radius);
    const int channels = endChannel - firstChannel;
    Sample* target = image.Pixels + firstChannel;
    const Sample* from = source ? source->Pixels + firstChannel : target;
    if (direction == 0 || direction == 2) {
        RunPass(Lines::Rows(image), image.Height, from, target, channels, sigma);
        from = target;
    }
    if (direction == 1 || direction == 2)
        RunPass(Lines::Columns(image), image.Width, from, target, channels, sigma);
}

} // namespace

template <class Sample>
void PictureK7<Sample>::GaussianRecursive(float radius, const PictureK7* source, int direction,
                                          bool withAlpha) {
    RunPasses(*this, radius, source, direction, 0, withAlpha ? 4 : 3);
}

template <class Sample>
void PictureK7<Sample>::GaussianRecursiveChannel(float radius, const PictureK7* source, int direction,
                                                 int channel, bool keepOthers) {
    if (source && keepOthers)
        CopyScaled(source, 1.0f, 1.0f, 1.0f, 1.0f);
    else if (source)
        Fill(0, 0, 0, 0);
    RunPasses(*this, radius, source, direction, channel, channel + 1);
}

template void K7Image::GaussianRecursive(float, const K7Image*, int, bool);
template void FloatImageK7::GaussianRecursive(float, const FloatImageK7*, int, bool);
template void K7Image::GaussianRecursiveChannel(float, const K7Image*, int, int, bool);
template void FloatImageK7::GaussianRecursiveChannel(float, const FloatImageK7*, int, int, bool);

} // namespace k7
