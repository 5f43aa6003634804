#include "frame/ImageXfmK7.h"

#include "baselib/Vector.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <numbers>

namespace k7 {

namespace {

constexpr const char* kSource = "frame/ImageXfmK7";
constexpr int kChannels = K7Image::Channels;

/// Keys' cubic convolution kernel at x from 0 to 2.
double CubicConvolution(double a, double x) {
    const double x2 = x * x;
    const double x3 = x2 * x;
    return x < 1.0 ? (a + 2.0) * x3 - (a + 3.0) * x2 + 1.0 : a * x3 - 5.0 * a * x2 + 8.0 * a * x - 4.0 * a;
}

double CubicBSpline(double x) {
    const double x2 = x * x;
    const double x3 = x2 * x;
    return (x < 1.0 ? 3.0 * x3 - 6.0 * x2 + 4.0 : 6.0 * x2 - x3 - 12.0 * x + 8.0) / 6.0;
}

double Sinc(double t) {
    const double angle = std::numbers::pi * t;
    return t == 0.0 ? 1.0 : std::sin(angle) / angle;
}

double KernelAt(int filter, double x) {
    switch (filter) {
    case ImageXfmK7::kCubic:
        return CubicConvolution(-0.5, x);
    case ImageXfmK7::kSharpCubic:
        return CubicConvolution(-1.0, x);
    case ImageXfmK7::kBSpline:
        return CubicBSpline(x);
    case ImageXfmK7::kWindowedSinc:
        return Sinc(x) * Sinc(x / 2.0);
    default:
        return 1.0 - x;
    }
}

/// A sum of weighted words is far from the ends of an int, so it is clamped as one: that has no branch.
template <class Sample>
Sample SampleOf(double sum, double total) {
    if constexpr (SampleTraits<Sample>::kWords)
        return ClampWord(static_cast<int>(sum / total + 0.5));
    else
        return static_cast<Sample>(sum / total);
}

template <class Sample>
K7_WIDE_VECTORS void Widen(double* to, const Sample* from, std::size_t count) {
    for (std::size_t k = 0; k < count; ++k) to[k] = from[k];
}

template <class Sample>
K7_WIDE_VECTORS void AddWeighted(double* sums, const Sample* in, double weight, int count) {
    for (int k = 0; k < count; ++k) sums[k] += in[k] * weight;
}

template <class Sample>
K7_WIDE_VECTORS void StoreSamples(Sample* out, const double* sums, double total, int count) {
    for (int k = 0; k < count; ++k) out[k] = SampleOf<Sample>(sums[k], total);
}

} // namespace

void ImageXfmK7::SetFilter(int id) {
    if (id == Filter) return;
    Filter = id;
    Support = id >= kCubic && id <= kWindowedSinc ? 2 : 1;
    const int last = Support * kSteps;
    Kernel.fill(0.0);
    for (int i = 0; i < last; ++i)
        Kernel[static_cast<std::size_t>(i)] = KernelAt(id, static_cast<double>(i) / kSteps);
}

void ImageXfmK7::SetDispatch(PluginK7* core, DispatchHook hook) {
    DispatchContext = core;
    Dispatch = hook;
}

void ImageXfmK7::RunExternalChunks(PluginK7* core, ExternalWorker worker, int rows, ImageXfmK7* xfm) {
    core->RunExternalChunks(worker, rows, xfm);
}

bool ImageXfmK7::IsAborted() const {
    return DispatchContext && DispatchContext->Operator && DispatchContext->Operator->AbortRaised();
}

void ImageXfmK7::Run(ExternalWorker worker, int lines) {
    if (DispatchContext && Dispatch)
        Dispatch(DispatchContext, worker, lines, this);
    else
        worker(this, 0, lines - 1, 1);
}

template <class Sample>
int ImageXfmK7::Transfer(const PictureK7<Sample>* source, PictureK7<Sample>* dest) {
    const bool sameWidth = source->Width == dest->Width;
    const bool sameHeight = source->Height == dest->Height;
    if (sameWidth && sameHeight) {
        std::get<PassPictures<Sample>>(pictures_) = {source, dest};
        Run(Worker<&ImageXfmK7::CopyRows<Sample>>, dest->Height);
        return 1;
    }
    if (sameHeight) return RunPass(source, dest, true);
    if (sameWidth) return RunPass(source, dest, false);
    const auto between = PictureK7<Sample>::Make(dest->Width, source->Height);
    return between && RunPass(source, between.get(), true) && RunPass<Sample>(between.get(), dest, false);
}

template int ImageXfmK7::Transfer(const K7Image*, K7Image*);
template int ImageXfmK7::Transfer(const FloatImageK7*, FloatImageK7*);

template <class Sample>
int ImageXfmK7::RunPass(const PictureK7<Sample>* source, PictureK7<Sample>* dest, bool alongRows) {
    std::get<PassPictures<Sample>>(pictures_) = {source, dest};
    SourceSize = alongRows ? source->Width : source->Height;
    DestSize = alongRows ? dest->Width : dest->Height;
    outOfMemory_ = !PlacePixels();
    if (outOfMemory_) return 0;
    if (alongRows)
        Run(Worker<&ImageXfmK7::ResizeRows<Sample>>, source->Height);
    else
        Run(Worker<&ImageXfmK7::ResizeColumns<Sample>>, source->Width);
    return !outOfMemory_;
}

/// Computes, once for all lines of the pass, which source pixels contribute to each destination pixel.
bool ImageXfmK7::PlacePixels() {
    // A single destination pixel takes the source's first one. The kernel of a reducing pass is stretched
    // over all source pixels that it passes.
    Step = DestSize > 1 ? (SourceSize - 1.0) / (DestSize - 1.0) : 0.0;
    const bool reducing = DestSize < SourceSize;
    const double stretch = reducing && DestSize > 1 ? Step : 1.0;
    const double reach = DestSize > 1 ? Support * stretch : 0.0;

    places_ = Buffer<Place>(static_cast<std::size_t>(DestSize), kSource);
    const double mostTaps = (std::floor(2.0 * reach) + 2.0) * DestSize; // rounding may let in one too many
    taps_ = Buffer<Tap>(Saturate<std::size_t>(mostTaps), kSource);
    if (!places_ || !taps_) return false;

    Tap* tap = taps_.begin();
    for (int d = 0; d < DestSize; ++d) {
        const double centre = d * Step;
        const auto low = static_cast<std::int64_t>(std::ceil(centre - reach));
        const auto high = static_cast<std::int64_t>(std::floor(centre + reach));
        Place& place = places_[static_cast<std::size_t>(d)];
        place.firstTap = tap - taps_.begin();
        double total = 0.0;
        for (std::int64_t i = low; i <= high; ++i) {
            const double distance = (static_cast<double>(i) - centre) / stretch;
            const double weight = Kernel[static_cast<std::size_t>(std::abs(Trunc(distance * kSteps)))];
            if (weight == 0.0) continue;
            total += weight;
            *tap++ = {weight, static_cast<std::int32_t>(std::clamp<std::int64_t>(i, 0, SourceSize - 1))};
        }
        place.endTap = tap - taps_.begin();
        place.total = reducing ? total : 1.0;
    }
    return true;
}

template <class Sample>
void ImageXfmK7::CopyRows(int first, int last) {
    const auto [source, dest] = std::get<PassPictures<Sample>>(pictures_);
    for (int y = first; y <= last && !IsAborted(); ++y)
        std::memcpy(dest->Rows[y], source->Rows[y], dest->RowBytes());
}

template <class Sample>
void ImageXfmK7::ResizeRow(const double* row, Sample* out) const {
    for (const Place& place : places_) {
        double sums[kChannels] = {};
        for (std::int64_t t = place.firstTap; t < place.endTap; ++t) {
            const Tap& tap = taps_[static_cast<std::size_t>(t)];
            const double* pixel = row + static_cast<std::size_t>(tap.source) * kChannels;
            for (int c = 0; c < kChannels; ++c) sums[c] += pixel[c] * tap.weight;
        }
        for (int c = 0; c < kChannels; ++c) *out++ = SampleOf<Sample>(sums[c], place.total);
    }
}

template <class Sample>
void ImageXfmK7::ResizeRows(int first, int last) {
    if (first > last) return;
    // Each sample is converted to double once, not once for every tap.
    const auto [source, dest] = std::get<PassPictures<Sample>>(pictures_);
    const std::size_t samples = static_cast<std::size_t>(SourceSize) * kChannels;
    const Buffer<double> row(samples, kSource);
    if (!row) {
        outOfMemory_ = true;
        return;
    }
    for (int y = first; y <= last && !IsAborted(); ++y) {
        Widen(row.data(), source->Rows[y], samples);
        ResizeRow(row.data(), dest->Rows[y]);
    }
}

template <class Sample>
void ImageXfmK7::ResizeColumns(int first, int last) {
    // Blocks of columns that stay in the first-level cache: rows are read in order, and the sums with them.
    constexpr int kBlock = 128 * kChannels;
    double sums[kBlock];
    const auto [source, dest] = std::get<PassPictures<Sample>>(pictures_);

    const std::int64_t end = (static_cast<std::int64_t>(last) + 1) * kChannels;
    for (std::int64_t from = static_cast<std::int64_t>(first) * kChannels; from < end; from += kBlock) {
        const int samples = static_cast<int>(std::min<std::int64_t>(end - from, kBlock));
        Sample** out = dest->Rows;
        for (const Place& place : places_) {
            if (IsAborted()) return;
            std::fill_n(sums, samples, 0.0);
            for (std::int64_t t = place.firstTap; t < place.endTap; ++t) {
                const Tap& tap = taps_[static_cast<std::size_t>(t)];
                const Sample* in = source->Rows[tap.source] + from;
                AddWeighted(sums, in, tap.weight, samples);
            }
            StoreSamples(*out++ + from, sums, place.total, samples);
        }
    }
}

} // namespace k7
