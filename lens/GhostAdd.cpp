#include "lens/GhostAdd.h"

#include "baselib/Vector.h"

#include <algorithm>
#include <cstddef>

namespace k7 {

namespace {

constexpr int kRun = 256; // pixels added in one go
constexpr int kChannels = 4;

struct Cells {
    const int* red;
    const int* green;
    const int* blue;
};

/// What up to kRun cells add to the words of their pixels.
K7_WIDE_VECTORS void LightOf(const Cells& cells, bool withAlpha, int count, int* light) {
    const int alphaMask = withAlpha ? ~0 : 0;
    for (int i = 0; i < count; ++i) {
        const int r = std::clamp(cells.red[i] / 4, 0, kFullScale);
        const int g = std::clamp(cells.green[i] / 4, 0, kFullScale);
        const int b = std::clamp(cells.blue[i] / 4, 0, kFullScale);
        light[kChannels * i] = r;
        light[kChannels * i + 1] = g;
        light[kChannels * i + 2] = b;
        light[kChannels * i + 3] = (Brightness16(r, g, b) >> 4) & alphaMask;
    }
}

K7_WIDE_VECTORS void AddWords(const int* light, const u16* in, u16* out, int words) {
    for (int i = 0; i < words; ++i) out[i] = ClampWord(in[i] + light[i]);
}

} // namespace

void AddGhosts(const GhostCanvas& canvas, int y, bool withAlpha, const u16* in, u16* out) {
    const std::size_t row = static_cast<std::size_t>(y) * static_cast<std::size_t>(canvas.Width);
    int light[kRun * kChannels];
    for (int x = 0; x < canvas.Width; x += kRun) {
        const int count = std::min(kRun, canvas.Width - x);
        const std::size_t cell = row + static_cast<std::size_t>(x);
        LightOf({canvas.Red + cell, canvas.Green + cell, canvas.Blue + cell}, withAlpha, count, light);
        AddWords(light, in, out, count * kChannels);
        in += count * kChannels;
        out += count * kChannels;
    }
}

} // namespace k7
