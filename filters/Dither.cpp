#include "filters/Dither.h"

#include "frame/Random.h"
#include "library/K7Image.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace k7 {

namespace {

/// The seed of a frame. It wraps where it leaves 32 bits (frame 1740), so that the pattern goes on changing.
std::uint32_t SeedAt(double time) {
    const double wrapped = std::fmod(std::trunc(time * 1234567.0), 4294967296.0);
    return static_cast<std::uint32_t>(Saturate<std::int64_t>(wrapped));
}

/// Random offsets along one axis, within a box of `spread` pixels.
struct Scatter {
    explicit Scatter(double pixels) : spread(Trunc(pixels)), half(spread / 2) {}

    int operator()(std::uint32_t* state) const {
        const std::uint32_t product =
            static_cast<std::uint32_t>(Rand15(state)) * static_cast<std::uint32_t>(spread);
        return (static_cast<std::int32_t>(product) >> 15) - half;
    }

    int spread;
    int half;
};

} // namespace

void Dither::Process() {
    InDepth(Input, Output, [&](const auto& in, auto& out) {
        RunRows(*this, in.Height, [&](int first, int last) { ScatterRows(in, out, first, last); });
        if (!IsAborted() && !ProcessAlpha) out.CopyAlpha(&in);
    });
}

template <class Sample>
void Dither::ScatterRows(const PictureK7<Sample>& in, const PictureK7<Sample>& out, int first, int last) {
    const double box = static_cast<double>(static_cast<float>(out.Width)) * (Radius.Value / 10.0);
    const Scatter across(box);
    const Scatter along(box * in.AspectX / in.AspectY);
    const bool horizontal = DiRe.Value != 3;
    const bool vertical = DiRe.Value != 2;

    const std::uint32_t seed = SeedAt(Time);
    const auto drawsOfRow = static_cast<std::uint64_t>(in.Width) * (horizontal + vertical);
    std::uint32_t state = seed;
    for (int y = first; y <= last && !IsAborted(); ++y) {
        // The sequence starts again with each part of the frame, whoever works on its rows.
        const int start = PartRows::Around(y, Division(), in.Height).first;
        if (y == first || y == start) state = SkipRand15(seed, drawsOfRow * static_cast<unsigned>(y - start));
        Sample* to = out.Rows[y];
        for (int x = 0; x < in.Width; ++x, to += in.Channels) {
            int fromX = horizontal ? across(&state) + x : x;
            int fromY = vertical ? along(&state) + y : y;
            if (DpEd.Value) {
                fromX = std::clamp(fromX, 0, in.Width - 1);
                fromY = std::clamp(fromY, 0, in.Height - 1);
            }
            constexpr std::size_t pixel = 4 * sizeof(Sample);
            if (fromX >= 0 && fromX < in.Width && fromY >= 0 && fromY < in.Height)
                std::memcpy(to, in.Rows[fromY] + static_cast<std::ptrdiff_t>(fromX) * in.Channels, pixel);
            else
                std::memset(to, 0, pixel);
        }
    }
}

} // namespace k7
