#include "lens/Hsv.h"

#include <algorithm>

namespace k7 {

namespace {

constexpr int kScale = 16383;
constexpr int kSextant = 16384; // the hue's sextants are one word wider than the scale that fills them

} // namespace

void RgbToHsv(const u16 rgb[3], u16* h, u16* s, u16* v) {
    const int r = rgb[0] >> 1;
    const int g = rgb[1] >> 1;
    const int b = rgb[2] >> 1;
    const int most = std::max({r, g, b});
    const int range = most - std::min({r, g, b});

    const int saturation = most == 0 ? 0 : range * kScale / most;
    int hue = 0;
    if (saturation != 0) {
        const int rc = (most - r) * kScale / range;
        const int gc = (most - g) * kScale / range;
        const int bc = (most - b) * kScale / range;
        if (most == r)
            hue = bc - gc;
        else if (most == g)
            hue = rc - bc + 2 * kSextant;
        else
            hue = gc - rc + 4 * kSextant;
        if (hue < 0) hue += 6 * kSextant;
    }
    *h = static_cast<u16>(hue / 6 * 2);
    *s = static_cast<u16>(saturation * 2);
    *v = static_cast<u16>(most * 2);
}

void HsvToRgb(u16 rgb[3], u16 h, u16 s, u16 v) {
    const int hue = (h >> 1) * 6;
    const int saturation = s >> 1;
    const int value = v >> 1;

    const int sextant = hue / kSextant;
    const int fraction = hue - sextant * kScale;
    const auto fade = [&](int part) {
        const float unit = static_cast<float>(value) / 268402688.0f; // the float nearest to kScale x kScale
        return Trunc(static_cast<float>(kScale * kScale - part * saturation) * unit);
    };
    const int low = (kScale - saturation) * value / kScale;
    const int falling = fade(fraction);
    const int rising = fade(kScale - fraction);

    const int table[6][3] = {{value, rising, low},  {falling, value, low}, {low, value, rising},
                             {low, falling, value}, {rising, low, value},  {value, low, falling}};
    for (int c = 0; c < 3; ++c) rgb[c] = static_cast<u16>(table[sextant][c] * 2);
}

} // namespace k7
