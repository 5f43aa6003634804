#include "filters/LineSum.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

namespace k7 {

namespace {

/// The line's side along one axis.
struct Side {
    std::int64_t cells;    ///< length
    bool up;               ///< towards higher coordinates
    int pixels;            ///< from the start to the picture's edge
    std::ptrdiff_t stride; ///< words to the next pixel
};

/// Fine steps after which the line enters its nth pixel along a side, n from 1: it starts in a pixel's first
/// cell.
std::int64_t StepsTo(std::int64_t n, const Side& side, int shift) {
    return side.up ? n << shift : ((n - 1) << shift) + 1;
}

constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();

/// Bresenham's line takes a step along its longer side, the major one, for each sample. Along the minor side
/// it has taken floor((2 minor i + major - 1) / (2 major)) steps at sample i, which starts from 0.
class Line {
public:
    Line(const Side& major, const Side& minor, int shift) : major_(major), minor_(minor), shift_(shift) {}

    template <class Sample>
    void Sum(const Sample* start, LineSumOf<Sample> sums[4]) const {
        std::int64_t inside = SamplesInside();
        if (major_.cells > kSteadyCells || inside * major_.cells >= kSteadyProduct) inside = 0;
        switch (shift_) {
        case 0:
            SumInside<0>(start, inside, sums);
            break;
        case 1:
            SumInside<1>(start, inside, sums);
            break;
        case 2:
            SumInside<2>(start, inside, sums);
            break;
        default:
            SumInside<3>(start, inside, sums);
            break;
        }
        if (inside <= major_.cells) SumRest(start, inside, sums);
    }

private:
    // The steps along the minor side in fixed point: floor(minor i / major + 1/2), a tie rounding down. The
    // fractions are multiples of 1 / (2 major), so the errors of i + 1 units in the last place do no harm
    // while they are below that.
    static constexpr int kFraction = 40;
    static constexpr std::int64_t kSteadyProduct = std::int64_t{1}
                                                   << (kFraction - 1);  ///< of samples and major
    static constexpr std::int64_t kSteadyCells = std::int64_t{1} << 22; ///< the product fits

    std::int64_t SampleAtMinorStep(std::int64_t m) const {
        return major_.cells * (2 * m - 1) / (2 * minor_.cells) + 1;
    }
    std::int64_t MinorStepsAt(std::int64_t sample) const {
        return (2 * minor_.cells * sample + major_.cells - 1) / (2 * major_.cells);
    }

    /// Samples before the line leaves the picture.
    std::int64_t SamplesInside() const {
        std::int64_t samples = std::min(major_.cells + 1, StepsTo(major_.pixels + 1, major_, shift_));
        const std::int64_t minorOut = StepsTo(minor_.pixels + 1, minor_, shift_);
        if (minor_.cells >= minorOut) samples = std::min(samples, SampleAtMinorStep(minorOut));
        return samples;
    }

    /// The first samples, which lie inside the picture: their places come from two independent counters, so
    /// that no sample waits for the one before.
    template <int shift, class Sample>
    void SumInside(const Sample* start, std::int64_t samples, LineSumOf<Sample> sums[4]) const {
        if (samples == 0) return;
        constexpr std::int64_t lastCell = (1 << shift) - 1;
        const std::int64_t majorBias = major_.up ? 0 : lastCell;
        const std::int64_t minorBias = minor_.up ? 0 : lastCell;
        constexpr std::int64_t one = std::int64_t{1} << kFraction;
        const std::int64_t step = (minor_.cells << kFraction) / std::max<std::int64_t>(major_.cells, 1);
        std::int64_t at = minorBias * one + one / 2 - 1;

        LineSumOf<Sample> local[4] = {sums[0], sums[1], sums[2], sums[3]};
        for (std::int64_t i = majorBias; i < majorBias + samples; ++i, at += step) {
            const Sample* pixel =
                start + (i >> shift) * major_.stride + (at >> (kFraction + shift)) * minor_.stride;
            for (int c = 0; c < K7Image::Channels; ++c) local[c] += pixel[c];
        }
        std::copy_n(local, 4, sums);
    }

    /// The samples from `first` on, a run within one pixel at a time: along an edge there is one run for each
    /// pixel, and in the corner a single one for all that is left of the line.
    template <class Sample>
    void SumRest(const Sample* start, std::int64_t first, LineSumOf<Sample> sums[4]) const;

    Side major_;
    Side minor_;
    int shift_;
};

/// Where a side of the line is in whole pixels, and the sample at which it enters the next one.
struct PixelCursor {
    std::int64_t pixel;
    std::int64_t next;
};

template <class Sample>
void Line::SumRest(const Sample* start, std::int64_t first, LineSumOf<Sample> sums[4]) const {
    auto nextOfMajor = [&](std::int64_t pixel) {
        return pixel < major_.pixels ? StepsTo(pixel + 1, major_, shift_) : kNever;
    };
    auto nextOfMinor = [&](std::int64_t pixel) {
        const std::int64_t steps = StepsTo(pixel + 1, minor_, shift_);
        return pixel < minor_.pixels && steps <= minor_.cells ? SampleAtMinorStep(steps) : kNever;
    };
    auto pixelAfter = [&](std::int64_t steps, const Side& side) {
        const std::int64_t bias = side.up ? 0 : (std::int64_t{1} << shift_) - 1;
        return std::min<std::int64_t>((steps + bias) >> shift_, side.pixels);
    };
    PixelCursor major{pixelAfter(first, major_), 0};
    PixelCursor minor{pixelAfter(MinorStepsAt(first), minor_), 0};
    major.next = nextOfMajor(major.pixel);
    minor.next = nextOfMinor(minor.pixel);

    const std::int64_t samples = major_.cells + 1;
    for (std::int64_t i = first; i < samples;) {
        const std::int64_t end = std::min({major.next, minor.next, samples});
        const Sample* pixel = start + major.pixel * major_.stride + minor.pixel * minor_.stride;
        const auto count = static_cast<LineSumOf<Sample>>(end - i);
        for (int c = 0; c < K7Image::Channels; ++c) sums[c] += pixel[c] * count;
        if (end == major.next) major.next = nextOfMajor(++major.pixel);
        if (end == minor.next) minor.next = nextOfMinor(++minor.pixel);
        i = end;
    }
}

} // namespace

template <class Sample>
void SumAlongLine(const PictureK7<Sample>& image, int x, int y, std::int64_t wayX, std::int64_t wayY,
                  int shift, LineSumOf<Sample> sums[4]) {
    const std::ptrdiff_t row = static_cast<std::ptrdiff_t>(image.Width) * K7Image::Channels;
    Side major{std::abs(wayX), wayX >= 0, wayX >= 0 ? image.Width - 1 - x : x,
               wayX >= 0 ? K7Image::Channels : -K7Image::Channels};
    Side minor{std::abs(wayY), wayY >= 0, wayY >= 0 ? image.Height - 1 - y : y, wayY >= 0 ? row : -row};
    if (minor.cells > major.cells) std::swap(major, minor);
    const Sample* start = image.Rows[y] + static_cast<std::size_t>(x) * K7Image::Channels;
    std::fill_n(sums, 4, LineSumOf<Sample>{0});
    Line(major, minor, shift).Sum(start, sums);
}

template void SumAlongLine(const K7Image&, int, int, std::int64_t, std::int64_t, int, std::uint32_t*);
template void SumAlongLine(const FloatImageK7&, int, int, std::int64_t, std::int64_t, int, double*);

} // namespace k7
