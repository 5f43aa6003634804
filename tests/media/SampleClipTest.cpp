#include "media/SampleClip.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <vector>

namespace media::test {
namespace {

using Words = std::vector<std::uint16_t>;

const Words& FirstFrame() {
    static const Words words = SampleClip::Frame(0);
    return words;
}

std::uint16_t Matte(const Words& words, int x, int y) {
    return words[4 * static_cast<std::size_t>(y * SampleClip::kWidth + x) + 3];
}

TEST(SampleClip, FramesBeyondTheEndsAreTheLastOnes) {
    EXPECT_EQ(SampleClip::Frame(-1), FirstFrame());
    EXPECT_EQ(SampleClip::Frame(99), SampleClip::Frame(SampleClip::kFrames - 1));
}

TEST(SampleClip, IsGoodForTheTools) {
    // Lights for the flares: small groups of full white. Colour, texture and a wide range of levels for the
    // rest.
    const Words& words = FirstFrame();
    int white = 0, dark = 0, coloured = 0;
    std::set<std::uint16_t> levels;
    for (std::size_t i = 0; i < words.size(); i += 4) {
        const auto [least, most] = std::minmax({words[i], words[i + 1], words[i + 2]});
        white += least > 64000;
        dark += most < 16000;
        coloured += most - least > 20000;
        levels.insert(words[i]);
    }
    EXPECT_GT(white, 100);
    EXPECT_LT(white, 2000);
    EXPECT_GT(dark, 100000);
    EXPECT_GT(coloured, 20000);
    EXPECT_GT(levels.size(), 30000u) << "16-bit levels, not 8-bit ones";
}

TEST(SampleClip, TheMatteTravelsFourteenColumnsAFrame) {
    const Words later = SampleClip::Frame(1);
    int inside = 0, partly = 0;
    for (int y = 0; y < SampleClip::kHeight; ++y)
        for (int x = 0; x + 14 < SampleClip::kWidth; ++x) {
            ASSERT_EQ(Matte(FirstFrame(), x, y), Matte(later, x + 14, y)) << x << ' ' << y;
            inside += Matte(later, x, y) == 65535;
            partly += Matte(later, x, y) != 65535 && Matte(later, x, y) != 0;
        }
    EXPECT_GT(inside, 30000);
    EXPECT_GT(partly, 300) << "the edge is smooth";
}

} // namespace
} // namespace media::test
