#include "media/sample/Houses.h"

#include <array>

namespace media::sample {
namespace {

constexpr std::array<std::uint32_t, 6> kRoomLights = {0xffd28a, 0xffc06a, 0xffe3b0,
                                                      0xf2b277, 0xbfd6ff, 0xffcf9a};

/// One row of houses side by side: how wide and high they are and what their windows look like.
struct Terrace {
    int width, spread; ///< a house is `width` to `width` + `spread` wide
    float low, high;   ///< heights of the roofs
    float windowX, windowY, glassX, glassY;
    float lit;      ///< share of the windows with light
    float strength; ///< how bright a lit window is
    std::uint32_t seed;
};

struct House {
    int left, right, number;
    float roof;
};

Light Wall(const Terrace& t, const House& h, float x, float y) {
    const bool near = t.width > 80;
    const Light tints[3] = {Rgb(0x3b2c33), Rgb(0x2d2f40), Rgb(0x40342c)};
    Light wall = near ? tints[h.number % 3] : Mix(Rgb(0x1a2140), Rgb(0x382d48), 1 - y / kHeight);
    if (!near) return wall;

    // Bricks in courses of four pixels, every other one shifted by half a brick, and stains of rain.
    const float course = std::floor(y / 4);
    const float shift = static_cast<int>(course) % 2 ? 4.5f : 0.0f;
    const int brick = static_cast<int>(std::floor((x + shift) / 9));
    const bool joint = y - course * 4 < 1 || x + shift - static_cast<float>(brick) * 9 < 1;
    wall = wall * (joint ? 0.55f : 0.75f + 0.5f * Random(brick, static_cast<int>(course), t.seed));
    return wall * (0.6f + 0.8f * Clouds(x * 0.03f, y * 0.012f, 4, t.seed + 9));
}

Light Window(const Terrace& t, const House& h, int column, int floor, float u, float v, Light wall) {
    const float edge = Box(u, v, (t.windowX - t.glassX) / 2, (t.windowY - t.glassY) / 2,
                           (t.windowX + t.glassX) / 2, (t.windowY + t.glassY) / 2);
    const int id = h.number * 64 + column;
    Light glass = Rgb(0x10141f);
    if (Random(id, floor, t.seed) < t.lit) {
        const Light room = Rgb(kRoomLights[Hash(id, floor, t.seed + 1) % kRoomLights.size()]);
        const float curtain = Random(id, floor, t.seed + 2);
        const float depth = 0.55f + 0.45f * v / t.windowY;
        glass = room * (t.strength * depth * (u / t.windowX > 0.35f + 0.5f * curtain ? 0.45f : 1.0f));
    }
    const bool bar =
        t.glassX > 8 && (std::fabs(u - t.windowX / 2) < 0.8f || std::fabs(v - t.windowY * 0.6f) < 0.8f);
    return Mix(wall, bar ? glass * 0.25f : glass, Cover(edge));
}

/// A shop behind glass on the ground floor, with an awning above it.
Light Shop(const House& h, float x, float y, Light wall) {
    const float inset = static_cast<float>(h.left) + 12;
    const float pane = std::fmod(x - inset, 34.0f);
    if (x < inset || x > static_cast<float>(h.right) - 12) return wall;
    const Light goods[4] = {Rgb(0xffc878), Rgb(0x9fe0ff), Rgb(0xffa66e), Rgb(0xd8f0c0)};
    if (y > 207) {
        const bool stripe = static_cast<int>((x - inset) / 6) % 2;
        return (stripe ? Rgb(0x7d2b2b) : Rgb(0xb9ac98)) * (0.25f + 0.02f * (216 - y));
    }
    if (pane < 2 || y < 168) return wall * 0.5f;
    const float shelf = Random(static_cast<int>(x / 5), static_cast<int>(y / 8), 77);
    return goods[h.number % 4] * (0.16f + 0.5f * Ramp(165, 207, y)) * (0.45f + 0.55f * shelf);
}

void PaintHouse(Canvas& canvas, const Terrace& t, const House& h) {
    const bool near = t.width > 80;
    Over(canvas, h.left, kKerb, h.right, static_cast<int>(h.roof), [&](float x, float y, Light& light) {
        const float u = x - static_cast<float>(h.left), v = h.roof - 10 - y;
        Light wall = Wall(t, h, x, y);
        if (h.roof - y < 4) wall = wall * 1.6f; // the cornice catches the sky
        if (near && y < 216) {
            light = y < 164 ? wall * 0.6f : Shop(h, x, y, wall);
            return;
        }
        const int column = static_cast<int>(u / t.windowX),
                  floor = static_cast<int>(std::floor(v / t.windowY));
        const bool whole = static_cast<float>(column + 1) * t.windowX < static_cast<float>(h.right - h.left);
        const bool room = v > 0 && (!near || y - 216 > t.windowY - std::fmod(v, t.windowY));
        light = whole && room ? Window(t, h, column, floor, u - static_cast<float>(column) * t.windowX,
                                       t.windowY - (v - static_cast<float>(floor) * t.windowY), wall)
                              : wall;
    });
}

/// Chimneys on the roofs of the near houses.
void PaintChimneys(Canvas& canvas, const Terrace& t, const House& h) {
    for (int i = 0; i < 3; ++i) {
        const int left =
            h.left + 12 +
            static_cast<int>(Random(h.number, i, t.seed + 4) * static_cast<float>(h.right - h.left - 40));
        const float top = h.roof + 9 + 14 * Random(h.number, i, t.seed + 5);
        Over(canvas, left - 2, static_cast<int>(h.roof), left + 16, static_cast<int>(top),
             [&](float x, float y, Light& light) {
                 const bool cap = top - y < 4;
                 if (cap || (x > static_cast<float>(left) && x < static_cast<float>(left) + 14))
                     light = Wall(t, h, x, y) * (cap ? 1.1f : 0.8f);
             });
    }
}

void PaintTerrace(Canvas& canvas, const Terrace& t) {
    int left = -20;
    for (int number = 0; left < kWidth; ++number) {
        const int width =
            t.width + static_cast<int>(Hash(number, 0, t.seed + 3) % static_cast<unsigned>(t.spread));
        const float roof = t.low + (t.high - t.low) * Random(number, 1, t.seed + 3);
        const House house = {left, left + width, number, roof};
        PaintHouse(canvas, t, house);
        if (t.width > 80) PaintChimneys(canvas, t, house);
        left += width;
    }
}

} // namespace

void PaintHouses(Canvas& canvas) {
    const Terrace town = {38, 44, 330, 430, 8, 11, 4, 6, 0.24f, 0.26f, 201};
    PaintTerrace(canvas, town);
    PaintHouse(canvas, town, {174, 218, 70, 446});
    PaintHouse(canvas, town, {526, 570, 71, 468});
    PaintTerrace(canvas, {118, 90, 290, 415, 23, 32, 12, 19, 0.33f, 0.62f, 311});
}

} // namespace media::sample
