#include "filters/Clean.h"

#include "baselib/Buffer.h"
#include "filters/NetworkMedian.h"
#include "filters/TileMedian.h"
#include "filters/ValueRanks.h"
#include "library/Chunks.h"
#include "library/K7Image.h"

#include <algorithm>
#include <bit>

namespace k7 {

namespace {

/// The window that lies round a pixel; even sizes reach one pixel less upwards and to the right.
struct WindowSize {
    int width, height;

    int Left(int x) const { return std::max(x - width / 2, 0); }
    int Low(int y) const { return std::max(y - height / 2, 0); }
    int Right(int x, int end) const { return std::min(x - width / 2 + width, end) - 1; }
    int High(int y, int end) const { return std::min(y - height / 2 + height, end) - 1; }
};

/// One channel's values in the window: a count for each value, a bit for each value that has one, and a
/// running median. The median goes from one value that is there to the next, so that a step of the window
/// costs what it has changed and not the number of bins.
class Histogram {
public:
    Histogram() = default;
    explicit Histogram(std::size_t bins) : counts_(bins, "Clean"), present_(bins / 64 + 1, "Clean") {
        counts_.Zero();
        present_.Zero();
    }
    explicit operator bool() const { return counts_ && present_; }

    void Add(std::uint32_t value) {
        ++counts_[value];
        present_[value >> 6] |= std::uint64_t{1} << (value & 63);
        below_ += value < at_;
    }
    void Remove(std::uint32_t value) {
        const bool gone = --counts_[value] == 0;
        present_[value >> 6] &= ~(std::uint64_t{gone} << (value & 63));
        below_ -= value < at_;
    }

    /// The value of rank `rank`, counted from 0; the histogram holds more than `rank` values.
    std::uint32_t Select(std::uint32_t rank) {
        while (below_ > rank) {
            at_ = Previous(at_);
            below_ -= counts_[at_];
        }
        while (below_ + counts_[at_] <= rank) {
            below_ += counts_[at_];
            at_ = Next(at_);
        }
        return at_;
    }

private:
    /// The nearest value below another; there is one.
    std::uint32_t Previous(std::uint32_t value) const {
        std::uint32_t i = value >> 6;
        std::uint64_t bits = present_[i] & ~(~std::uint64_t{0} << (value & 63));
        while (!bits) bits = present_[--i];
        return i * 64 + 63 - static_cast<std::uint32_t>(std::countl_zero(bits));
    }
    /// The nearest value above another; there is one.
    std::uint32_t Next(std::uint32_t value) const {
        std::uint32_t i = value >> 6;
        std::uint64_t bits = present_[i] & (~std::uint64_t{1} << (value & 63));
        while (!bits) bits = present_[++i];
        return i * 64 + static_cast<std::uint32_t>(std::countr_zero(bits));
    }

    Buffer<std::uint32_t> counts_;
    Buffer<std::uint64_t> present_;
    std::uint32_t at_ = 0;    ///< where the last selection ended
    std::uint32_t below_ = 0; ///< values below at_
};

// What a histogram counts: values from 0 to Bins() - 1, in rows from FirstRow() on.

/// Words count as they are.
class WordBand {
public:
    explicit WordBand(const K7Image& image) : image_(image) {}
    std::size_t Bins() const { return std::size_t{kFullScale} * 2 + 2; }
    const u16* Row(int y) const { return image_.Rows[y]; }
    u16 Value(int, std::uint32_t rank) const { return static_cast<u16>(rank); }

private:
    const K7Image& image_;
};

/// Of floats their ranks, within as many rows as windows lie on.
class FloatBand {
public:
    FloatBand(const ValueRanks& ranks, const Region& part) : ranks_(ranks), part_(part) {}
    std::size_t Bins() const {
        return static_cast<std::size_t>(part_.width) * static_cast<std::size_t>(part_.height);
    }
    const std::uint32_t* Row(int y) const {
        return ranks_.Ranks() + static_cast<std::ptrdiff_t>(y - part_.y) * part_.width * K7Image::Channels;
    }
    float Value(int channel, std::uint32_t rank) const { return ranks_.Value(channel, rank); }

private:
    const ValueRanks& ranks_;
    const Region part_;
};

/// The window of one output row as it slides from column to column.
template <class Band>
class Window {
public:
    Window(const Band& band, int channels) : band_(band), channels_(channels) {
        for (int c = 0; c < channels; ++c) histograms_[c] = Histogram(band.Bins());
    }
    explicit operator bool() const {
        return std::all_of(histograms_, histograms_ + channels_, [](const Histogram& h) { return bool(h); });
    }

    /// Rows of the window, which lie inside the picture.
    void SetRows(int first, int last) {
        firstRow_ = first;
        lastRow_ = last;
    }

    void AddColumn(int x) {
        ForColumn(x, [](Histogram& histogram, std::uint32_t value) { histogram.Add(value); });
        count_ += static_cast<std::uint32_t>(lastRow_ - firstRow_ + 1);
    }
    void RemoveColumn(int x) {
        ForColumn(x, [](Histogram& histogram, std::uint32_t value) { histogram.Remove(value); });
        count_ -= static_cast<std::uint32_t>(lastRow_ - firstRow_ + 1);
    }

    template <class Sample>
    void WriteMedians(Sample* pixel) {
        for (int c = 0; c < channels_; ++c) pixel[c] = band_.Value(c, histograms_[c].Select(count_ / 2));
        if (channels_ < K7Image::Channels) pixel[3] = 0;
    }

private:
    template <class Action>
    void ForColumn(int x, Action action) {
        const std::size_t offset = static_cast<std::size_t>(x) * K7Image::Channels;
        for (int y = firstRow_; y <= lastRow_; ++y) {
            const auto* pixel = band_.Row(y) + offset;
            for (int c = 0; c < channels_; ++c) action(histograms_[c], pixel[c]);
        }
    }

    const Band& band_;
    int channels_;
    Histogram histograms_[K7Image::Channels];
    int firstRow_ = 0;
    int lastRow_ = -1;
    std::uint32_t count_ = 0;
};

/// Medians of rows, in a window that slides.
template <class Band, class Sample>
void SlideOverRows(const Band& band, const WindowSize& size, int first, int last, int channels,
                   const PictureK7<Sample>& out) {
    Window<Band> window(band, channels);
    if (!window) return;
    for (int y = first; y <= last && !AbortRequested(); ++y) {
        window.SetRows(size.Low(y), size.High(y, out.Height));
        int left = 0; // columns of the picture now in the window
        int right = -1;
        Sample* pixel = out.Rows[y];
        for (int x = 0; x < out.Width; ++x, pixel += out.Channels) {
            while (right < size.Right(x, out.Width)) window.AddColumn(++right);
            while (left < size.Left(x)) window.RemoveColumn(left++);
            window.WriteMedians(pixel);
        }
        while (left <= right) window.RemoveColumn(left++); // leaves every count at zero again
    }
}

void FilterByHistogram(const K7Image& in, const K7Image& out, const WindowSize& size, int first, int last,
                       int channels) {
    SlideOverRows(WordBand(in), size, first, last, channels, out);
}

void FilterByHistogram(const FloatImageK7& in, const FloatImageK7& out, const WindowSize& size, int first,
                       int last, int channels) {
    const int rows = std::max(size.height / 2, 16); // between two sorts
    const int most = std::min(rows + size.height, in.Height);
    ValueRanks ranks(static_cast<std::size_t>(in.Width) * static_cast<std::size_t>(most));
    if (!ranks) return;
    for (int y = first; y <= last && !AbortRequested(); y += rows) {
        const int end = std::min(y + rows - 1, last);
        const int low = size.Low(y);
        const Region part = {0, low, in.Width, size.High(end, in.Height) - low + 1};
        ranks.Fill(in, part, channels);
        SlideOverRows(FloatBand(ranks, part), size, y, end, channels, out);
    }
}

/// Whether comparators suffice: for windows that they know, on pictures that have room for one.
template <class Sample>
bool IsForNetwork(const PictureK7<Sample>& in, const WindowSize& size) {
    return size.width == size.height && size.width >= NetworkMedian<Sample>::kLeast &&
           size.width <= NetworkMedian<Sample>::kMost && size.width <= in.Width && size.height <= in.Height;
}

/// The median of a window that the picture's border cuts.
template <class Sample>
void FilterPixel(const PictureK7<Sample>& in, const PictureK7<Sample>& out, const WindowSize& size, int x,
                 int y) {
    constexpr int most = NetworkMedian<Sample>::kMost * NetworkMedian<Sample>::kMost;
    for (int c = 0; c < in.Channels; ++c) {
        Sample values[most] = {};
        int count = 0;
        for (int v = size.Low(y); v <= size.High(y, in.Height); ++v)
            for (int u = size.Left(x); u <= size.Right(x, in.Width); ++u)
                values[count++] = in.Rows[v][u * in.Channels + c];
        std::nth_element(values, values + count / 2, values + count);
        out.Rows[y][x * in.Channels + c] = values[count / 2];
    }
}

template <class Sample>
void FilterByNetwork(const PictureK7<Sample>& in, const PictureK7<Sample>& out, const WindowSize& size,
                     int first, int last) {
    NetworkMedian<Sample> median(in);
    if (!median) return;
    const int side = size.width;
    const int left = side / 2; // columns, and rows, that the border cuts
    const int right = in.Width - (side - 1 - left);
    const int firstWhole = std::max(first, left);
    const int lastWhole = std::min(last, in.Height - (side - 1 - left) - 1);
    for (int y = firstWhole; y <= lastWhole && !AbortRequested(); y += 2) {
        const int at = left * out.Channels;
        median.FilterRows(side, y - left, out.Rows[y] + at, y < lastWhole ? out.Rows[y + 1] + at : nullptr);
    }
    for (int y = first; y <= last && !AbortRequested(); ++y) {
        const bool whole = y >= firstWhole && y <= lastWhole;
        for (int x = 0; x < (whole ? left : in.Width); ++x) FilterPixel(in, out, size, x, y);
        for (int x = right; x < in.Width && whole; ++x) FilterPixel(in, out, size, x, y);
    }
}

template <class Sample>
bool IsForTiles(const PictureK7<Sample>&, const WindowSize& size) {
    return std::max(size.width, size.height) <= TileMedian<Sample>::kMostSide;
}

template <class Sample>
void FilterByTiles(Clean& core, const PictureK7<Sample>& in, const PictureK7<Sample>& out,
                   const WindowSize& size) {
    const TileNetworks whole(size.width, size.height, 0);
    const TileNetworks cut(size.width, size.height, TileNetworks::kBorderSlack);
    RunRows(core, in.Height, [&](int first, int last) {
        TileMedian<Sample> median(in, whole, cut);
        if (median) median.FilterRows(first, last, out);
    });
}

/// A control's size in pixels of the picture, at least 1 and clamped to twice the picture's: more changes
/// nothing.
template <class Sample>
int PixelsOf(int control, const PictureK7<Sample>& image) {
    const int size = Trunc(static_cast<float>(control) / image.WidthScale);
    const std::int64_t all = 2 * static_cast<std::int64_t>(std::max(image.Width, image.Height)) + 2;
    return static_cast<int>(std::clamp<std::int64_t>(size, 1, all));
}

} // namespace

void Clean::Process() {
    if (IsAborted()) return;
    InDepth(Input, Output, [&](const auto& in, auto& out) {
        const WindowSize size = {PixelsOf(XRad.Value, in), PixelsOf(YRad.Value, in)};
        if (IsForNetwork(in, size))
            RunRows(*this, in.Height,
                    [&](int first, int last) { FilterByNetwork(in, out, size, first, last); });
        else if (IsForTiles(in, size))
            FilterByTiles(*this, in, out, size);
        else
            RunRows(*this, in.Height, [&](int first, int last) {
                FilterByHistogram(in, out, size, first, last, ProcessAlpha ? 4 : 3);
            });
        if (!ProcessAlpha) out.CopyAlpha(&in);
    });
}

} // namespace k7
