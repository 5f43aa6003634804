#include "lens/GhostAdd.h"

#include "baselib/Vector.h"
#include "library/Samples.h"

#include <algorithm>
#include <cstddef>
#include <type_traits>

namespace k7 {

namespace {

constexpr int kRun = 256; // pixels added in one go
constexpr int kChannels = 4;

struct Cells {
    const int* red;
    const int* green;
    const int* blue;
};

/// What a cell adds to a sample.
int LightIn(int cell, int) {
    return std::clamp(cell / 4, 0, kFullScale);
}
float LightIn(int cell, float) {
    return static_cast<float>(std::max(cell, 0)) * 0.25f;
}

int Grey(int red, int green, int blue) {
    return Brightness16(red, green, blue) >> 4;
}
float Grey(float red, float green, float blue) {
    constexpr float white = kFullScale;
    return Brightness16(std::min(red, white), std::min(green, white), std::min(blue, white)) / 16.0f;
}

/// What up to kRun cells add to the samples of their pixels, in integers for words.
template <class Light>
K7_WIDE_VECTORS void LightOf(const Cells& cells, int count, Light* light) {
    for (int i = 0; i < count; ++i) {
        const Light r = LightIn(cells.red[i], Light{});
        const Light g = LightIn(cells.green[i], Light{});
        const Light b = LightIn(cells.blue[i], Light{});
        light[kChannels * i] = r;
        light[kChannels * i + 1] = g;
        light[kChannels * i + 2] = b;
        light[kChannels * i + 3] = Grey(r, g, b);
    }
}

K7_WIDE_VECTORS void AddSamples(const int* light, const u16* in, u16* out, int samples) {
    for (int i = 0; i < samples; ++i) out[i] = ClampWord(in[i] + light[i]);
}

K7_WIDE_VECTORS void AddSamples(const float* light, const float* in, float* out, int samples) {
    for (int i = 0; i < samples; ++i) out[i] = in[i] + light[i];
    for (int i = kChannels - 1; i < samples; i += kChannels)
        out[i] = std::max(in[i], std::min(out[i], static_cast<float>(kFullScale)));
}

} // namespace

template <class Sample>
void AddGhosts(const GhostCanvas& canvas, int y, bool withAlpha, const Sample* in, Sample* out) {
    const std::size_t row = static_cast<std::size_t>(y) * static_cast<std::size_t>(canvas.Width);
    std::conditional_t<SampleTraits<Sample>::kWords, int, float> light[kRun * kChannels];
    for (int x = 0; x < canvas.Width; x += kRun) {
        const int count = std::min(kRun, canvas.Width - x);
        const std::size_t cell = row + static_cast<std::size_t>(x);
        LightOf({canvas.Red + cell, canvas.Green + cell, canvas.Blue + cell}, count, light);
        if (!withAlpha)
            for (int i = 0; i < count; ++i) light[kChannels * i + 3] = 0;
        AddSamples(light, in, out, count * kChannels);
        in += count * kChannels;
        out += count * kChannels;
    }
}

template void AddGhosts(const GhostCanvas&, int, bool, const u16*, u16*);
template void AddGhosts(const GhostCanvas&, int, bool, const float*, float*);

} // namespace k7
