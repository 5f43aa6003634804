#include "lens/Flare2.h"

#include "tests/support/FlareDefaults.h"

#include <utility>
#include <vector>

namespace k7::test {
namespace {

/// Flare2 at its controls' defaults, over a picture of 101 x 81 square pixels.
class Flare2Frame : public testing::Test, protected FlareStage<Flare2> {
protected:
    using FlareStage::Run;
    static constexpr int kWidth = 101;
    static constexpr int kHeight = 81;

    /// Shows only the lights themselves: each a glow of one pixel whose word is a fifth of the light's.
    void ShowLights() {
        core.Streaks.Value = 0;
        core.HaloStr.Value = 0.0;
        core.GlowRadius.Value = 0.0;
        core.GlowStrength.Value = 100.0;
        core.Contrast.Value = 100.0;
    }

    /// The lights over a dark picture.
    Picture Lights() { return Run(*Flat(kWidth, kHeight, 0)); }

    /// Columns and rows of those, row by row from the lowest.
    std::vector<std::pair<int, int>> Lit() {
        const Picture out = Lights();
        std::vector<std::pair<int, int>> lit;
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
                if (out->Rows[y][4 * x]) lit.emplace_back(x, y);
        return lit;
    }
};

TEST_F(Flare2Frame, BoostIsTheSizeOfTheLight) {
    ShowLights();
    const int sizes[][2] = {{1, 1}, {3, 1}, {3, 3}, {5, 3}, {5, 5}, {7, 5}, {7, 7}, {9, 7}, {9, 9}};
    for (int boost = 1; boost <= 9; ++boost) {
        core.Boost.Value = boost;
        const auto& [width, height] = sizes[boost - 1];
        std::vector<std::pair<int, int>> want; // round 101 x 0.3 and 81 x 0.3
        for (int y = 24 - height / 2; y <= 24 + height / 2; ++y)
            for (int x = 30 - width / 2; x <= 30 + width / 2; ++x) want.emplace_back(x, y);
        EXPECT_EQ(Lit(), want) << boost;
    }
    for (int boost : {0, -3, -2147483647 - 1}) {
        core.Boost.Value = boost;
        EXPECT_TRUE(Lit().empty()) << boost;
    }
}

TEST_F(Flare2Frame, AnAbortAnywhereLeavesNothingForTheNextFrame) {
    const Picture in = Noise(kWidth, kHeight);
    core.GlowRadius.Value = 9.0;
    const Picture want = Run(*in);
    for (long asks : {0, 1, 5, 20, 100, 300, 1000, 3000}) {
        core.StreakLength.Value = 70; // tables other than those that are kept
        runner.owner.AsksLeft = asks;
        Run(*in);
        runner.owner.AsksLeft = -1;
        core.StreakLength.Value = 75;
        EXPECT_TRUE(Same(*Run(*in), *want)) << asks;
        core.StreakLength.Value = 70;
        runner.owner.AsksLeft = asks;
        Run(*in);
        runner.owner.AsksLeft = -1;
        const Picture again = Run(*in); // with the tables that the abort left
        FlareStage<Flare2> fresh;
        fresh.core.GlowRadius.Value = 9.0;
        fresh.core.StreakLength.Value = 70;
        EXPECT_TRUE(Same(*again, *fresh.Run(*in))) << asks;
    }
}

TEST_F(Flare2Frame, StreaksOfNegativeLengthAreNotDrawn) {
    const Picture in = Noise(kWidth, kHeight);
    core.StreakLength.Value = 0;
    const Picture want = Run(*in);
    for (int length : {-1, -2147483647, -2147483647 - 1}) {
        core.StreakLength.Value = length;
        EXPECT_TRUE(Same(*Run(*in), *want)) << length;
    }
}

TEST_F(Flare2Frame, SourceOutsideTheFrameIsNoLight) {
    const Picture in = Noise(kWidth, kHeight);
    for (const auto& [x, y] : {std::pair{1.2, 0.5}, {0.5, -0.4}, {1e300, 0.5}, {0.5, -1e300}}) {
        core.Source.Value = {x, y};
        EXPECT_TRUE(Same(*Run(*in), *in)) << x << " " << y;
    }
    core.Source.Value = {-0.5 / kWidth, 0.5}; // less than a pixel outside counts as column 0
    ShowLights();
    EXPECT_EQ(Lit(), (std::vector{std::pair{0, 40}}));
}

TEST_F(Flare2Frame, ColourComesFromTheSwatchOrThePicture) {
    ShowLights();
    const Picture dark = Flat(kWidth, kHeight, 0);
    const Picture green = Flat(kWidth, kHeight, 0, 32767, 0, 0);
    const auto light = [&](int from) {
        core.ColourFrom.Value = from;
        const Picture out = Run(*dark, *green);
        const u16* words = out->Rows[24] + 4 * 30;
        return std::vector<int>(words, words + 3);
    };
    const auto swatch = light(1);
    EXPECT_GT(swatch[0], swatch[1]);
    EXPECT_GT(swatch[1], swatch[2]);
    const auto picture = light(2);
    EXPECT_EQ(picture[0], 0);
    EXPECT_GT(picture[1], 0);
    core.LightColour.Value[0] = 40000; // brighter than white
    EXPECT_GT(light(1)[0], swatch[0]);
}

TEST_F(Flare2Frame, GhostsLieOnTheLineThroughThePoint) {
    ShowLights();
    core.Source.Value = {0.2, 0.5};
    core.Reflect.Value = {0.5, 0.5};
    core.Reflections.Value = 2;
    core.Reflectivity.Value = 100.0;
    core.ReflScale.Value = 1.0;
    EXPECT_EQ(Lit(), (std::vector{std::pair{20, 40}, {65, 40}, {80, 40}}));
    const Picture out = Lights();
    const u16* row = out->Rows[40];
    EXPECT_GT(row[4 * 20], row[4 * 65]);
    EXPECT_GT(row[4 * 65], row[4 * 80]);

    core.ReflScale.Value = -1.0;                                            // on the side of the light
    EXPECT_EQ(Lit(), (std::vector{std::pair{19, 40}, {20, 40}, {34, 40}})); // 50 - 30.3 and 50 - 15.15
    core.ReflScale.Value = 0.0;
    EXPECT_EQ(Lit(), (std::vector{std::pair{20, 40}, {50, 40}}));
}

TEST_F(Flare2Frame, ThreadsDoNotChangeIt) {
    const Picture in = Noise(kWidth, kHeight);
    core.Reflections.Value = 4;
    core.Boost.Value = 3;
    const Picture first = Run(*in);
    EXPECT_FALSE(Same(*first, *in));
    for (int threads : {2, 3, 7, 300}) EXPECT_TRUE(Same(*Run(*in, threads), *first)) << threads;
}

} // namespace
} // namespace k7::test
