#include "media/sample/NightStreet.h"

#include "media/sample/Houses.h"

#include <cstddef>

namespace media::sample {
namespace {

// --- Sky --------------------------------------------------------------------------------------------------

constexpr float kMoonX = 742, kMoonY = 462, kMoonRadius = 21;

Light Moon(float x, float y) {
    const float seas = Clouds(x * 0.11f, y * 0.11f, 4, 31);
    return Rgb(0xf4ecd8) * (0.88f - 0.7f * Ramp(0.42f, 0.62f, seas));
}

Light Sky(float x, float y) {
    const float height = (y - kKerb) / (kHeight - kKerb);
    Light sky = Mix(Rgb(0x4a3550), Rgb(0x141b3a), Ramp(0.0f, 0.55f, height));
    sky = Mix(sky, Rgb(0x080c1e), Ramp(0.4f, 1.1f, height));

    // Clouds, lit by the town from below and by the moon.
    const float cloud = Ramp(0.44f, 0.74f, Clouds(x * 0.0055f + 3, y * 0.013f, 6, 17));
    const float moon = Glow(Circle(x, y, kMoonX, kMoonY, 0), 120);
    sky = Mix(sky, Rgb(0x5d4252) * (1.1f - height) + Rgb(0x8f9ac0) * (0.75f * moon), 0.8f * cloud);

    // Stars where the sky is clear, the moon and its halo.
    const int cx = static_cast<int>(x), cy = static_cast<int>(y);
    if (Hash(cx, cy, 5) % 1100 == 0) sky += Rgb(0xdfe6ff) * ((1 - cloud) * height * Random(cx, cy, 6));
    sky += Rgb(0xb8c4ec) * (0.30f * Glow(Circle(x, y, kMoonX, kMoonY, 0), 58));
    return Mix(sky, Moon(x, y), (1 - 0.5f * cloud) * Cover(Circle(x, y, kMoonX, kMoonY, kMoonRadius)));
}

// --- Lights -----------------------------------------------------------------------------------------------

/// A lamp: a small core far brighter than white and the mist lit around it.
struct Lamp {
    float x, y, core;
    Light light;
    float strength, mist;
};

const Light kSodium = Rgb(0xffb45a), kMercury = Rgb(0xcfe2ff);

constexpr int kPosts[4] = {84, 336, 622, 888};
constexpr float kPostHeight = 322;

std::vector<Lamp> Lamps() {
    std::vector<Lamp> lamps;
    for (int post : kPosts)
        lamps.push_back({static_cast<float>(post) + 15, kPostHeight - 7, 3.4f, kSodium, 22, 20});

    // A string of coloured bulbs hangs in parabolas from post to post.
    const Light bulbs[5] = {Rgb(0xff4038), Rgb(0x48ff70), Rgb(0x50a0ff), Rgb(0xffd040), Rgb(0xff58d8)};
    for (int span = 0; span < 3; ++span)
        for (int i = 1; i < 9; ++i) {
            const float t = static_cast<float>(i) / 9;
            const float from = static_cast<float>(kPosts[span]), to = static_cast<float>(kPosts[span + 1]);
            const float sag = 4 * t * (1 - t) * 34;
            lamps.push_back(
                {from + (to - from) * t, kPostHeight - 18 - sag, 1.5f, bulbs[(span * 3 + i) % 5], 9, 6});
        }

    // Beacons on the roofs, a traffic light, a shop's green cross and a blue one.
    lamps.push_back({196, 448, 1.8f, Rgb(0xff3020), 16, 8});
    lamps.push_back({548, 470, 1.6f, Rgb(0xff3020), 14, 8});
    lamps.push_back({792, 246, 2.4f, Rgb(0x38ff90), 16, 9});
    lamps.push_back({262, 236, 2.2f, Rgb(0x40c8ff), 14, 9});
    lamps.push_back({706, 238, 1.8f, kMercury, 16, 8});
    return lamps;
}

void PaintLamp(Canvas& canvas, const Lamp& lamp) {
    const int reach = static_cast<int>(lamp.mist * 9);
    const int cx = static_cast<int>(lamp.x), cy = static_cast<int>(lamp.y);
    Over(canvas, cx - reach, cy - reach, cx + reach, cy + reach, [&](float x, float y, Light& light) {
        const float d = Circle(x, y, lamp.x, lamp.y, 0);
        const float fade = Ramp(static_cast<float>(reach), static_cast<float>(reach) * 0.4f, d);
        light += lamp.light * (lamp.strength * Cover(d - lamp.core) + 0.34f * fade * Glow(d, lamp.mist));
    });
}

void PaintPosts(Canvas& canvas) {
    const Light iron = Rgb(0x14151c);
    for (int post : kPosts) {
        const float at = static_cast<float>(post);
        Over(canvas, post - 8, kKerb, post + 26, static_cast<int>(kPostHeight) + 8,
             [&](float x, float y, Light& light) {
                 const float pole = Box(x, y, at - 2 - 12 / (y - kKerb + 6), kKerb,
                                        at + 2 + 12 / (y - kKerb + 6), kPostHeight);
                 const float arm = Segment(x, y, at, kPostHeight, at + 16, kPostHeight) - 1.4f;
                 const float hood = Box(x, y, at + 7, kPostHeight - 5, at + 23, kPostHeight + 1, 3);
                 light = Mix(light, iron, Cover(std::min({pole, arm, hood})));
             });
    }
    // The traffic light's post, and the wire of the tram.
    Over(canvas, 784, kKerb, 801, 262, [&](float x, float y, Light& light) {
        light = Mix(light, iron,
                    Cover(std::min(Box(x, y, 791, kKerb, 794, 240), Box(x, y, 786, 222, 799, 256, 3))));
    });
    Over(canvas, 0, 240, kWidth, 246, [&](float, float y, Light& light) {
        light = Mix(light, iron, 0.8f * Cover(std::fabs(y - 243) - 0.7f));
    });
}

/// KINO in neon tubes, one letter below the other. Strokes in units of a letter's box.
void PaintNeon(Canvas& canvas) {
    struct Stroke {
        float ax, ay, bx, by;
        int letter;
    };
    constexpr Stroke strokes[] = {{0, 0, 0, 1, 0},        {0, 0.5f, 1, 1, 0},      {0, 0.5f, 1, 0, 0},
                                  {0.5f, 0, 0.5f, 1, 1},  {0, 0, 0, 1, 2},         {0, 1, 1, 0, 2},
                                  {1, 0, 1, 1, 2},        {0, 0.25f, 0, 0.75f, 3}, {1, 0.25f, 1, 0.75f, 3},
                                  {0, 0.75f, 0.5f, 1, 3}, {0.5f, 1, 1, 0.75f, 3},  {0, 0.25f, 0.5f, 0, 3},
                                  {0.5f, 0, 1, 0.25f, 3}};
    constexpr float left = 474, top = 384, wide = 16, high = 24, pitch = 32;
    Over(canvas, 404, 184, 564, 464, [&](float x, float y, Light& light) {
        float tube = 1e9f;
        for (const Stroke& s : strokes) {
            const float base = top - high - pitch * static_cast<float>(s.letter);
            tube = std::min(tube, Segment(x, y, left + wide * s.ax, base + high * s.ay, left + wide * s.bx,
                                          base + high * s.by));
        }
        const float frame = std::fabs(Box(x, y, left - 11, 250, left + wide + 11, top + 10, 8));
        light += Rgb(0xff3f9c) * (5.0f * Cover(tube - 1.2f) + 0.38f * Glow(tube, 9) * Ramp(64, 20, tube));
        light += Rgb(0x38d8ff) * (2.4f * Cover(frame - 0.9f) + 0.22f * Glow(frame, 7) * Ramp(50, 15, frame));
    });
}

// --- Street -----------------------------------------------------------------------------------------------

/// The setts of the road in perspective: which stone a pixel shows, and how far from its edge it lies.
struct Sett {
    int column, row;
    float edge; ///< 0 in the joint to 1 at the crown
};

Sett SettAt(float x, float y) {
    const float depth = 2400.0f / (kKerb + 62 - y); // distance from the eye, growing towards the kerb
    const float v = depth * 1.9f;
    const float row = std::floor(v);
    const float u = (x - 480) * depth * 0.0075f + (static_cast<int>(row) % 2 ? 0.5f : 0.0f);
    const float column = std::floor(u);
    const float fu = std::fabs(u - column - 0.5f), fv = std::fabs(v - row - 0.5f);
    return {static_cast<int>(column), static_cast<int>(row), Ramp(0.5f, 0.3f, std::max(fu, fv))};
}

/// Lamp light that reaches the ground, in pools below the posts.
Light Pools(float x, float y) {
    Light sum = Rgb(0x2a3050) * 0.5f;
    for (int post : kPosts) {
        const float dx = (x - static_cast<float>(post) - 15) / 120, dy = (y - 128) / 60;
        sum += kSodium * (0.75f * Glow(std::sqrt(dx * dx + dy * dy), 0.8f));
    }
    return sum;
}

void PaintGround(Canvas& canvas) {
    Over(canvas, 0, 0, kWidth, kKerb, [](float x, float y, Light& light) {
        const Sett sett = SettAt(x, y);
        const float tone = 0.35f + 0.65f * Random(sett.column, sett.row, 41);
        const float grain = 0.7f + 0.6f * Noise(x * 0.7f, y * 0.9f, 43);
        light = Rgb(0x565a66) * Pools(x, y) * (tone * grain * (0.25f + 0.75f * sett.edge));
        for (float rail : {58.0f, 96.0f}) {
            const float d = std::fabs(y - rail);
            light = Mix(light, Rgb(0x0a0b10), Cover(d - 2.6f));
            light = Mix(light, Pools(x, y) * 0.9f, 0.8f * Cover(std::fabs(y - rail - 1) - 0.8f));
        }
    });
    Over(canvas, 0, kKerb - 6, kWidth, kKerb + 14, [](float x, float y, Light& light) {
        const bool slab = std::fmod(x + 4, 38.0f) < 1.2f;
        const float face = y < kKerb + 2 ? 0.5f : 1.1f;
        light = Rgb(0x62605f) * Pools(x, y) *
                (face * (slab ? 0.5f : 0.8f + 0.3f * Noise(x * 0.2f, y * 0.5f, 44)));
    });
}

/// Lays the wet street's mirror image over the ground, stretched downwards as in puddles.
void PaintReflections(Canvas& canvas) {
    const Canvas dry = canvas;
    Over(canvas, 0, 0, kWidth, kKerb - 6, [&](float x, float y, Light& light) {
        const Mirror mirror = MirrorAt(static_cast<int>(x), static_cast<int>(y));
        Light sum;
        for (int i = -3; i <= 3; ++i) {
            const int sx = std::clamp(static_cast<int>(mirror.x), 0, kWidth - 1);
            const int sy = std::clamp(static_cast<int>(mirror.y) + i * 7, kKerb, kHeight - 1);
            const Light l = dry[static_cast<std::size_t>(sy) * kWidth + static_cast<std::size_t>(sx)];
            sum += Light{std::min(l.r, 4.0f), std::min(l.g, 4.0f), std::min(l.b, 4.0f)};
        }
        light += sum * (mirror.strength / 7);
    });
}

} // namespace

Mirror MirrorAt(int x, int y) {
    const float fx = static_cast<float>(x) + 0.5f, fy = static_cast<float>(y) + 0.5f;
    const Sett sett = SettAt(fx, fy);
    const float puddle = Ramp(0.4f, 0.62f, Clouds(fx * 0.008f, fy * 0.03f, 4, 53));
    const float rough = 1 - 0.75f * puddle;
    const float tiltX =
        (Random(sett.column, sett.row, 51) - 0.5f) * 12 + (Noise(fx * 0.2f, fy * 0.3f, 52) - 0.5f) * 5;
    const float tiltY = (Random(sett.column, sett.row, 54) - 0.5f) * 60;
    const float strength = 0.16f + 0.42f * puddle;
    return {strength * (0.4f + 0.6f * std::max(sett.edge, puddle)), fx + tiltX * rough,
            kKerb + (kKerb - fy) * 1.55f + tiltY * rough};
}

Canvas PaintStreet() {
    Canvas canvas(static_cast<std::size_t>(kWidth) * kHeight);
    Over(canvas, 0, kKerb, kWidth, kHeight, [](float x, float y, Light& light) { light = Sky(x, y); });
    PaintHouses(canvas);
    PaintGround(canvas);
    PaintNeon(canvas);
    PaintPosts(canvas);
    for (const Lamp& lamp : Lamps()) PaintLamp(canvas, lamp);
    PaintReflections(canvas);
    return canvas;
}

} // namespace media::sample
