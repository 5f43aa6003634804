#include "media/SampleClip.h"

#include "media/sample/NightStreet.h"
#include "media/sample/Tram.h"

#include <cstddef>

namespace media {
namespace {

using namespace sample;

constexpr int kRail = 66;       ///< row of the rail on which the tram runs
constexpr int kFirstPlace = 96; ///< column of the tram's rear end in frame 0
constexpr int kSpeed = 14;      ///< columns a frame

/// The frame in light, with the matte of what moves.
struct Scene {
    Canvas canvas;
    std::vector<float> matte;
};

std::size_t At(int x, int y) {
    return static_cast<std::size_t>(y) * kWidth + static_cast<std::size_t>(x);
}

/// The tram's picture is the same in every frame, so it is painted once.
const std::vector<Paint>& TramPicture() {
    static const std::vector<Paint> picture = [] {
        std::vector<Paint> paints;
        for (int y = 0; y < static_cast<int>(kTramHeight); ++y)
            for (int x = 0; x < static_cast<int>(kTramLength); ++x)
                paints.push_back(TramAt(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f));
        return paints;
    }();
    return picture;
}

Paint TramPixel(int x, int y) {
    if (x < 0 || y < 0 || x >= static_cast<int>(kTramLength) || y >= static_cast<int>(kTramHeight)) return {};
    return TramPicture()[static_cast<std::size_t>(y) * static_cast<std::size_t>(kTramLength) +
                         static_cast<std::size_t>(x)];
}

void AddGlow(Scene& scene, float cx, float cy, Light light, float radius) {
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const float d = Circle(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f, cx, cy, 0);
            if (d < radius * 12)
                scene.canvas[At(x, y)] += light * (Glow(d, radius) * Ramp(radius * 12, radius * 4, d));
        }
}

/// Shade and mirror image of the tram on the wet street, below the rail.
void PaintTramOnStreet(Scene& scene, int place) {
    for (int y = 0; y < kKerb - 6; ++y)
        for (int x = std::max(0, place - 60); x < std::min(kWidth, place + 440); ++x) {
            Light& light = scene.canvas[At(x, y)];
            const float mid = (static_cast<float>(x - place) - kTramLength / 2) / (kTramLength / 2);
            const float under =
                Glow(std::fabs(static_cast<float>(y - kRail)), 16) * Ramp(1.08f, 0.9f, std::fabs(mid));
            light = light * (1 - 0.75f * under);
            if (y >= kRail) continue;
            const Mirror mirror = MirrorAt(x, y);
            const int sx = static_cast<int>(mirror.x) - place;
            const int sy = static_cast<int>((mirror.y - kKerb) / 1.55f) - (kKerb - kRail);
            Light sum;
            float alpha = 0;
            for (int i = -2; i <= 2; ++i) {
                const Paint p = TramPixel(sx, sy + i * 3);
                sum +=
                    Light{std::min(p.light.r, 4.0f), std::min(p.light.g, 4.0f), std::min(p.light.b, 4.0f)} *
                    p.alpha;
                alpha += p.alpha;
            }
            light = light * (1 - 0.85f * alpha / 5) + sum * (mirror.strength * 1.6f / 5);
        }
}

void PaintTram(Scene& scene, int place, int frame) {
    PaintTramOnStreet(scene, place);
    for (int y = 0; y < static_cast<int>(kTramHeight); ++y)
        for (int x = 0; x < static_cast<int>(kTramLength); ++x) {
            if (x + place < 0 || x + place >= kWidth) continue;
            const Paint p = TramPixel(x, y);
            const std::size_t at = At(x + place, y + kRail);
            scene.canvas[at] = Mix(scene.canvas[at], p.light, p.alpha);
            scene.matte[at] = p.alpha;
        }

    // Lamps of the tram shine through the mist; now and then the wire throws a spark.
    const float left = static_cast<float>(place), rail = kRail;
    AddGlow(scene, left + kTramLength - 6, rail + 56, Rgb(0xffe8c0) * 0.8f, 16);
    AddGlow(scene, left + 7, rail + 56, Rgb(0xff3020) * 0.4f, 9);
    if (Hash(frame, 0, 71) % 3 == 0 || (frame >= 11 && frame <= 13)) {
        AddGlow(scene, left + 180, rail + 176, Rgb(0xa8ccff) * 0.8f, 22);
        AddGlow(scene, left + 180, rail + 176, Rgb(0xd0e4ff) * 40.0f, 2.2f);
    }
}

Scene PaintScene(int frame) {
    static const Canvas street = PaintStreet();
    Scene scene{street, std::vector<float>(street.size())};
    PaintTram(scene, kFirstPlace + kSpeed * frame, frame);
    return scene;
}

/// Gamma 2 and full scale, with the grain of a fast film and now and then a speck of a hot or a dead pixel.
std::uint16_t Develop(float light, float grain, int x, int y, std::uint32_t seed) {
    float level = std::sqrt(std::clamp(light, 0.0f, 1.0f));
    level += (grain - 0.5f) * 0.022f;
    const std::uint32_t speck = Hash(x, y, seed);
    if (speck % 900 == 0) level = std::max(level, 0.3f + 0.25f * static_cast<float>(speck >> 24) / 255);
    return static_cast<std::uint16_t>(std::floor(std::clamp(level, 0.0f, 1.0f) * 65535 + 0.5f));
}

} // namespace

std::vector<std::uint16_t> SampleClip::Frame(int frame) {
    frame = std::clamp(frame, 0, kFrames - 1);
    const Scene scene = PaintScene(frame);
    std::vector<std::uint16_t> words(scene.canvas.size() * 4);
    const std::uint32_t seed = 1000 + 8 * static_cast<std::uint32_t>(frame);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) {
            const Light light = scene.canvas[At(x, y)];
            std::uint16_t* word = &words[4 * At(x, y)];
            word[0] = Develop(light.r, Random(x, y, seed), x, y, seed + 3);
            word[1] = Develop(light.g, Random(x, y, seed + 1), x, y, seed + 4);
            word[2] = Develop(light.b, Random(x, y, seed + 2), x, y, seed + 5);
            word[3] = static_cast<std::uint16_t>(std::floor(scene.matte[At(x, y)] * 65535 + 0.5f));
        }
    return words;
}

} // namespace media
