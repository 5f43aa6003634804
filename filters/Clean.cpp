#include "filters/Clean.h"

#include "baselib/Buffer.h"
#include "filters/SmallMedian.h"
#include "library/K7Image.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace k7 {

namespace {

/// One channel's values in the window: a count for each word, a bit for each word that has one, and a running
/// median. The median goes from one value that is there to the next, so that a step of the window costs what
/// it has changed and not the number of bins.
class Histogram {
public:
    static constexpr int kWords = 65536;

    void Attach(std::uint32_t* zeroedCounts) { counts_ = zeroedCounts; }

    void Add(int word) {
        ++counts_[word];
        present_[word >> 6] |= std::uint64_t{1} << (word & 63);
        below_ += word < at_;
    }
    void Remove(int word) {
        const bool gone = --counts_[word] == 0;
        present_[word >> 6] &= ~(std::uint64_t{gone} << (word & 63));
        below_ -= word < at_;
    }

    /// The value of rank `rank`, counted from 0; the histogram holds more than `rank` values.
    int Select(std::uint32_t rank) {
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
    /// The nearest value below a word; there is one.
    int Previous(int word) const {
        int i = word >> 6;
        std::uint64_t bits = present_[i] & ~(~std::uint64_t{0} << (word & 63));
        while (!bits) bits = present_[--i];
        return i * 64 + 63 - std::countl_zero(bits);
    }
    /// The nearest value above a word; there is one.
    int Next(int word) const {
        int i = word >> 6;
        std::uint64_t bits = present_[i] & (~std::uint64_t{1} << (word & 63));
        while (!bits) bits = present_[++i];
        return i * 64 + std::countr_zero(bits);
    }

    std::uint32_t* counts_ = nullptr;
    std::uint64_t present_[kWords / 64] = {};
    int at_ = 0;              ///< where the last selection ended
    std::uint32_t below_ = 0; ///< values below at_
};

/// The window of one output row as it slides from column to column.
class Window {
public:
    Window(const K7Image& image, int channels, std::uint32_t* zeroedCounts)
        : image_(image)
        , channels_(channels) {
        for (int c = 0; c < channels; ++c) histograms_[c].Attach(zeroedCounts + c * Histogram::kWords);
    }

    /// Rows of the window, which lie inside the picture.
    void SetRows(int first, int last) {
        firstRow_ = first;
        lastRow_ = last;
    }

    void AddColumn(int x) {
        ForColumn(x, [](Histogram& histogram, int word) { histogram.Add(word); });
        count_ += static_cast<std::uint32_t>(lastRow_ - firstRow_ + 1);
    }
    void RemoveColumn(int x) {
        ForColumn(x, [](Histogram& histogram, int word) { histogram.Remove(word); });
        count_ -= static_cast<std::uint32_t>(lastRow_ - firstRow_ + 1);
    }

    void WriteMedians(u16* pixel) {
        for (int c = 0; c < channels_; ++c) pixel[c] = static_cast<u16>(histograms_[c].Select(count_ / 2));
        if (channels_ < K7Image::Channels) pixel[3] = 0;
    }

private:
    template <class Action>
    void ForColumn(int x, Action action) {
        const std::size_t offset = static_cast<std::size_t>(x) * K7Image::Channels;
        for (int y = firstRow_; y <= lastRow_; ++y) {
            const u16* pixel = image_.Rows[y] + offset;
            for (int c = 0; c < channels_; ++c) action(histograms_[c], pixel[c]);
        }
    }

    const K7Image& image_;
    int channels_;
    Histogram histograms_[K7Image::Channels];
    int firstRow_ = 0;
    int lastRow_ = -1;
    std::uint32_t count_ = 0;
};

/// A control's size in pixels of the picture, held to twice the picture's: more changes nothing.
int WindowSize(int control, const K7Image& image) {
    const int size = Trunc(static_cast<float>(control) / image.WidthScale);
    const std::int64_t all = 2 * static_cast<std::int64_t>(std::max(image.Width, image.Height)) + 2;
    return static_cast<int>(std::min<std::int64_t>(size, all));
}

} // namespace

void Clean::Process() {
    if (IsAborted()) return;
    RunChunks(WorkerOf<&Clean::FilterRows>, Input.Image->Height);
    if (!ProcessAlpha) Output.Image->CopyAlpha(Input.Image);
}

void Clean::FilterRows(int first, int last) {
    const K7Image& in = *Input.Image;
    const K7Image& out = *Output.Image;

    int winX = WindowSize(XRad.Value, in);
    int winY = WindowSize(YRad.Value, in);
    if (winX <= 1 && winY <= 1) {
        for (int y = first; y <= last; ++y) std::memcpy(out.Rows[y], in.Rows[y], in.RowBytes());
        return;
    }
    winX = std::max(winX, 1);
    winY = std::max(winY, 1);
    if (static_cast<std::int64_t>(winX) * winY <= SmallMedian::kMostValues)
        FilterSmall(winX, winY, first, last);
    else
        FilterLarge(winX, winY, first, last);
}

void Clean::FilterSmall(int winX, int winY, int first, int last) {
    SmallMedian median(*Input.Image, winX, winY, first);
    if (!median) return;
    for (int y = first; y <= last && !IsAborted(); ++y) median.FilterRow(y, Output.Image->Rows[y]);
}

void Clean::FilterLarge(int winX, int winY, int first, int last) {
    const K7Image& in = *Input.Image;
    const K7Image& out = *Output.Image;
    const int halfX = winX / 2;
    const int halfY = winY / 2;

    const int channels = ProcessAlpha ? 4 : 3;
    Buffer<std::uint32_t> counts(static_cast<std::size_t>(channels) * Histogram::kWords, "Clean", __LINE__);
    if (!counts) return;
    counts.Zero();
    Window window(in, channels, counts.data());

    for (int y = first; y <= last && !IsAborted(); ++y) {
        window.SetRows(std::max(y - halfY, 0), std::min(y - halfY + winY - 1, in.Height - 1));
        int left = 0; // columns of the picture now in the window
        int right = std::min(winX - 1 - halfX, in.Width - 1);
        for (int x = left; x <= right; ++x) window.AddColumn(x);

        u16* pixel = out.Rows[y];
        window.WriteMedians(pixel);
        for (int x = 1; x < in.Width; ++x) {
            if (x - 1 - halfX >= left) window.RemoveColumn(left++);
            if (x - halfX + winX - 1 > right && right < in.Width - 1) window.AddColumn(++right);
            window.WriteMedians(pixel += K7Image::Channels);
        }
        while (left <= right) window.RemoveColumn(left++); // leaves every count at zero again
    }
}

} // namespace k7
