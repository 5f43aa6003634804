#include "filters/Trace.h"

#include "library/K7Image.h"

#include <algorithm>

namespace k7 {

namespace {

/// The level as a word. Outside the range of words all of them lie on one side of it, as they do of 65535.
u16 LevelWord(double percent) {
    const int level = Trunc(percent / 100.0 * 32767.0 + 0.5);
    return level >= 0 && level <= kFullScale ? static_cast<u16>(level) : u16{65535};
}

/// Marks `count` words at full scale where of the four words of their 2 x 2 pixels some are above the level
/// and some are not. `east` is the distance in words to the neighbouring column, `north` the neighbouring
/// row.
void MarkWords(const u16* row, const u16* north, std::ptrdiff_t east, int count, u16 level, u16* marks) {
    for (int i = 0; i < count; ++i) {
        const u16 low = std::min(std::min(row[i], row[i + east]), std::min(north[i], north[i + east]));
        const u16 high = std::max(std::max(row[i], row[i + east]), std::max(north[i], north[i + east]));
        marks[i] = high > level && low <= level ? u16{kFullScale} : u16{0};
    }
}

/// Where one of the colours is marked, all are.
void JoinColours(u16* marks, int width) {
    for (int x = 0; x < width; ++x, marks += K7Image::Channels)
        marks[0] = marks[1] = marks[2] = std::max({marks[0], marks[1], marks[2]});
}

/// Puts the picture where there is no mark.
void DrawUnder(const u16* row, int count, u16* marks) {
    for (int i = 0; i < count; ++i) marks[i] = marks[i] ? marks[i] : row[i];
}

} // namespace

void Trace::Process() {
    if (IsAborted()) return;
    RunChunks(WorkerOf<&Trace::TraceRows>, Input.Image->Height);
    if (!ProcessAlpha) Output.Image->CopyAlpha(Input.Image);
}

void Trace::TraceRows(int first, int last) {
    const K7Image& in = *Input.Image;
    const u16 level = LevelWord(Leve.Value);
    constexpr int pixel = K7Image::Channels;
    const int words = in.Width * pixel;
    const int body = words - pixel; // all but the last column, which looks to its left

    for (int y = first; y <= last && !IsAborted(); ++y) {
        const u16* row = in.Rows[y];
        const u16* north = in.Rows[y + 1 < in.Height ? y + 1 : std::max(y - 1, 0)];
        u16* marks = Output.Image->Rows[y];
        MarkWords(row, north, pixel, body, level, marks);
        MarkWords(row + body, north + body, in.Width > 1 ? -pixel : 0, pixel, level, marks + body);
        if (TCol.Value == 2) JoinColours(marks, in.Width);
        if (Over.Value) DrawUnder(row, words, marks);
    }
}

} // namespace k7
