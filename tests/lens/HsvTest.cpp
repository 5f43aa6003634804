#include "lens/Hsv.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>

namespace k7 {
namespace {

using Rgb = std::array<u16, 3>;

Rgb ToRgb(int h, int s, int v) {
    Rgb rgb;
    HsvToRgb(rgb.data(), static_cast<u16>(h), static_cast<u16>(s), static_cast<u16>(v));
    return rgb;
}

TEST(Hsv, PureColoursLieAtTheSixthsOfTheCircle) {
    struct {
        Rgb rgb;
        int hue;
    } const colours[] = {{{32767, 0, 0}, 0},         {{32767, 32767, 0}, 5460}, {{0, 32767, 0}, 10922},
                         {{0, 32767, 32767}, 16382}, {{0, 0, 32767}, 21844},    {{32767, 0, 32767}, 27306}};
    for (const auto& colour : colours) {
        u16 h, s, v;
        RgbToHsv(colour.rgb.data(), &h, &s, &v);
        EXPECT_EQ(h, colour.hue);
        EXPECT_EQ(s, 32766);
        EXPECT_EQ(v, 32766);
    }
}

TEST(Hsv, GreysHaveNeitherHueNorSaturation) {
    for (const u16 grey : std::initializer_list<u16>{0, 1, 2, 16000, 32767}) {
        const u16 rgb[3] = {grey, grey, grey};
        u16 h, s, v;
        RgbToHsv(rgb, &h, &s, &v);
        EXPECT_EQ(h, 0);
        EXPECT_EQ(s, 0);
        EXPECT_EQ(v, grey & ~1);
        for (u16 word : ToRgb(12345, 0, grey)) EXPECT_EQ(word, v);
    }
}

TEST(Hsv, RedExceedsTheValueOnlyAtTwoHues) {
    for (int hue = 0; hue < 32767; ++hue) {
        const Rgb rgb = ToRgb(hue, 32767, 32767);
        const bool passes = hue == 27306 || hue == 27307;
        EXPECT_EQ(*std::max_element(rgb.begin(), rgb.end()) > 32766, passes) << hue;
        EXPECT_EQ(rgb[0] > 32766, passes) << hue;
        EXPECT_EQ(*std::min_element(rgb.begin(), rgb.end()), 0) << hue;
    }
}

/// The colour by its definition: a hue from 0 to 6, saturation and value from 0 to 1.
std::array<double, 3> RealRgb(double h, double s, double v) {
    const auto channel = [&](double n) {
        const double k = std::fmod(n + h, 6.0);
        return v - v * s * std::clamp(std::min(k, 4.0 - k), 0.0, 1.0);
    };
    return {channel(5.0), channel(3.0), channel(1.0)};
}

TEST(Hsv, IsTheHexconeAndComesBack) {
    for (int hue = 0; hue < 32767; hue += 101)
        for (int saturation : {3000, 20000, 32767})
            for (int value : {5000, 32767}) {
                const Rgb rgb = ToRgb(hue, saturation, value);
                const auto want = RealRgb(hue / 32768.0 * 6.0, saturation / 32767.0, value / 32767.0);
                for (std::size_t c = 0; c < 3; ++c) EXPECT_NEAR(rgb[c], want[c] * 32767.0, 16.0) << hue;
                u16 h, s, v;
                RgbToHsv(rgb.data(), &h, &s, &v);
                EXPECT_NEAR(h, hue, 3.0 + 4.0 * 32767.0 / saturation * 32767.0 / value) << hue;
                EXPECT_NEAR(s, saturation, 2.0 + 8.0 * 32767.0 / value);
                EXPECT_NEAR(v, value, 8);
            }
}

} // namespace
} // namespace k7
