#include "filters/Trace.h"

#include "library/K7Image.h"

#include <algorithm>

namespace k7 {

namespace {

/// The level as a sample. Outside the range of words all of them lie on one side of it, as they do of 65535.
/// Floats have theirs between two words, so that a word's value is on the same side as the word.
template <class Sample>
Sample LevelOf(double percent) {
    const int level = Trunc(percent / 100.0 * 32767.0 + 0.5);
    if constexpr (SampleTraits<Sample>::kWords)
        return level >= 0 && level <= kFullScale ? static_cast<Sample>(level) : Sample{65535};
    else
        return static_cast<Sample>(level + 0.5);
}

/// Marks `count` samples at full scale where of the four samples of their 2 x 2 pixels some are above the
/// level and some are not. `east` is the distance in samples to the neighbouring column, `north` the
/// neighbouring row.
template <class Sample>
void MarkSamples(const Sample* row, const Sample* north, std::ptrdiff_t east, int count, Sample level,
                 Sample* marks) {
    for (int i = 0; i < count; ++i) {
        const Sample low = std::min(std::min(row[i], row[i + east]), std::min(north[i], north[i + east]));
        const Sample high = std::max(std::max(row[i], row[i + east]), std::max(north[i], north[i + east]));
        marks[i] = high > level && low <= level ? Sample{kFullScale} : Sample{0};
    }
}

/// Where one of the colours is marked, all are.
template <class Sample>
void JoinColours(Sample* marks, int width) {
    for (int x = 0; x < width; ++x, marks += K7Image::Channels)
        marks[0] = marks[1] = marks[2] = std::max({marks[0], marks[1], marks[2]});
}

/// Puts the picture where there is no mark.
template <class Sample>
void DrawUnder(const Sample* row, int count, Sample* marks) {
    for (int i = 0; i < count; ++i) marks[i] = marks[i] != Sample{0} ? marks[i] : row[i];
}

} // namespace

void Trace::Process() {
    if (IsAborted()) return;
    InDepth(Input, Output, [&](const auto& in, auto& out) {
        RunRows(*this, in.Height, [&](int first, int last) { TraceRows(in, out, first, last); });
        if (!ProcessAlpha) out.CopyAlpha(&in);
    });
}

template <class Sample>
void Trace::TraceRows(const PictureK7<Sample>& in, const PictureK7<Sample>& out, int first, int last) {
    const Sample level = LevelOf<Sample>(Leve.Value);
    constexpr int pixel = K7Image::Channels;
    const int samples = in.Width * pixel;
    const int body = samples - pixel; // all but the last column, which looks to its left

    for (int y = first; y <= last && !IsAborted(); ++y) {
        const Sample* row = in.Rows[y];
        const Sample* north = in.Rows[y + 1 < in.Height ? y + 1 : std::max(y - 1, 0)];
        Sample* marks = out.Rows[y];
        MarkSamples(row, north, pixel, body, level, marks);
        MarkSamples(row + body, north + body, in.Width > 1 ? -pixel : 0, pixel, level, marks + body);
        if (TCol.Value == 2) JoinColours(marks, in.Width);
        if (Over.Value) DrawUnder(row, samples, marks);
    }
}

} // namespace k7
