#include "lens/Flare.h"

#include "tests/support/FlareDefaults.h"

#include <cmath>
#include <limits>

namespace k7::test {
namespace {

/// Flare at its controls' defaults, which show the light map, but with the whole picture in its rectangle.
class WholeFlare : public FlareStage<Flare> {
public:
    WholeFlare() {
        core.Centre.Value = {0.5, 0.5};
        core.ScaleX.Value = core.ScaleY.Value = 2.0;
    }
};

/// Dark noise with a few bright pixels.
Picture Night(int width = 90, int height = 70) {
    const Picture noise = Noise(width, height);
    return MakePicture(width, height, [&](int x, int y, int c) {
        const int word = noise->Rows[y][4 * x + c];
        return (x * 5 + y * 11) % 397 == 0 ? 30000 + word % 2768 : word / 4;
    });
}

/// Black, with one pixel of a colour.
Picture Spot(int width, int height, int x, int y, int red, int green, int blue) {
    const int words[4] = {red, green, blue, 0};
    return MakePicture(width, height, [&](int u, int v, int c) { return u == x && v == y ? words[c] : 0; });
}

TEST(FlareLightMap, ShowsThePixelsBetweenTheLevels) {
    WholeFlare stage;
    const Picture in = MakePicture(200, 3, [](int x, int, int c) { return c == 3 ? 123 : 29400 + x; });
    const Picture out = stage.Run(*in);
    for (int x = 0; x < 200; ++x) {
        EXPECT_EQ(out->Rows[1][4 * x], x >= 90 ? 29400 + x : 0) << x; // 90 percent is level 29490
        EXPECT_EQ(out->Rows[1][4 * x + 3], 123);
    }

    // The mean of the channels counts: 29489.67 is truncated.
    EXPECT_EQ(stage.Run(*Flat(1, 1, 32767, 26000, 29702, 0))->Pixels[0], 0);
    EXPECT_EQ(stage.Run(*Flat(1, 1, 32767, 26000, 29703, 0))->Pixels[0], 32767);

    stage.core.LowLight.Value = 50.0;
    stage.core.HighLight.Value = 20.0; // below the low level, the only one left
    for (int word = 16381; word <= 16385; ++word)
        EXPECT_EQ(stage.Run(*Flat(1, 1, word))->Pixels[0], word == 16383 ? word : 0);
}

TEST(FlareLightMap, OpenLevelsSelectTheWholePicture) {
    WholeFlare stage;
    const Picture in = Noise(30, 20);
    stage.core.LowLight.Value = 0.0;
    stage.core.ScaleX.Value = 0.01;
    EXPECT_TRUE(Same(*stage.Run(*in), *in));
    stage.core.LowLight.Value = 1.0;
    EXPECT_FALSE(Same(*stage.Run(*in), *in));
}

TEST(FlareLightMap, RectangleHasTheFramesShapeOrItsOwn) {
    WholeFlare stage;
    const auto expect = [&](int left, int bottom, int right, int top) {
        const Picture want = MakePicture(100, 50, [&](int x, int y, int c) {
            return c == 3 || (x >= left && x < right && y >= bottom && y < top) ? 32767 : 0;
        });
        EXPECT_TRUE(Same(*stage.Run(*Flat(100, 50, 32767)), *want));
    };
    stage.core.ScaleX.Value = 0.2;
    stage.core.ScaleY.Value = 0.8;
    expect(41, 21, 61, 31);
    stage.core.MatchScales.Value = 0;
    expect(41, 6, 61, 46);
    stage.core.ScaleX.Value = -0.2; // bounds are swapped
    expect(42, 6, 60, 46);
    stage.core.Centre.Value = {0.0, 5.0};
    expect(0, 0, 0, 0);
    stage.core.ScaleX.Value = stage.core.ScaleY.Value = 1e300;
    expect(0, 0, 100, 50);
}

TEST(FlareGhosts, LieBeyondTheCentreAndFadeByTheirNumber) {
    WholeFlare stage;
    stage.core.Reflections.Value = 2;
    stage.core.Reflectivity.Value = 75.0;
    const Picture out = stage.Run(*Spot(101, 101, 10, 30, 30000, 30000, 32000));
    int lit = 0;
    for (int i = 0; i < 101 * 101; ++i) lit += out->Pixels[4 * i] != 0;
    EXPECT_EQ(lit, 3);
    EXPECT_EQ(out->Rows[30][4 * 10], 30000);
    EXPECT_EQ(out->Rows[60][4 * 70], 11250); // half way: 30000 x 0.75 / 2
    EXPECT_EQ(out->Rows[70][4 * 90], 7500);  // mirrored: 30000 x 0.75 / 3
    EXPECT_EQ(out->Rows[70][4 * 90 + 2], 8000);
}

TEST(FlareGhosts, LeaveTheFrameOrMeetAtFullScale) {
    WholeFlare stage;
    stage.core.Reflections.Value = 1;
    stage.core.Reflectivity.Value = 500.0; // as 100
    stage.core.ReflScale.Value = 300.0;
    const Picture spot = Spot(101, 101, 10, 30, 30000, 30000, 30000);
    EXPECT_EQ(stage.Run(*spot)->Rows[70][4 * 90], 0);

    stage.core.ReflScale.Value = 0.0;
    EXPECT_EQ(stage.Run(*spot)->Rows[50][4 * 50], 15000);
    const Picture three =
        MakePicture(101, 101, [](int x, int y, int) { return y == 3 && x < 3 ? 30000 : 0; });
    EXPECT_EQ(stage.Run(*three)->Rows[50][4 * 50], 32767); // 3 x 15000
    stage.core.Reflections.Value = 2147483647;
    EXPECT_EQ(stage.Run(*spot)->Rows[50][4 * 50], 32767);
    stage.core.Reflections.Value = -2147483647 - 1;
    EXPECT_TRUE(Same(*stage.Run(*spot), *spot));
}

TEST(FlareGhosts, NeedMoreThanALineOfPixels) {
    WholeFlare stage;
    stage.core.Reflections.Value = 3;
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 30}, {30, 1}}) {
        const Picture in = Flat(width, height, 32000);
        EXPECT_TRUE(Same(*stage.Run(*in), *in));
    }
}

class FlareFrame : public testing::Test {
protected:
    FlareFrame() { stage.core.LightMapOnly.Value = 0; }
    WholeFlare stage;
};

TEST_F(FlareFrame, DarkPictureIsUnchanged) {
    const Picture in = Noise(60, 40);
    EXPECT_TRUE(Same(*stage.Run(*in, *Flat(60, 40, 0)), *in));
}

TEST_F(FlareFrame, IsTheSameForEveryThreadCountAndFrame) {
    const Picture in = Night();
    stage.core.Reflections.Value = 2;
    const Picture first = stage.Run(*in);
    for (int threads : {2, 3, 16, 200}) EXPECT_TRUE(Same(*stage.Run(*in, threads), *first)) << threads;

    stage.core.Contrast.Value = 60.0; // other tables in between
    stage.core.HaloFringes.Value = 7;
    EXPECT_FALSE(Same(*stage.Run(*in), *first));
    stage.core.Contrast.Value = 135.0;
    stage.core.HaloFringes.Value = 100;
    EXPECT_TRUE(Same(*stage.Run(*in), *first));
}

TEST_F(FlareFrame, StreaksKeepTheDrawOfTheFirstFrame) {
    const Picture in = Night();
    const Picture first = stage.Run(*in);
    WholeFlare later;
    later.core.LightMapOnly.Value = 0;
    later.core.HaloFringes.Value = 99; // fewer draws before the streaks' own
    (void)later.Run(*in);
    later.core.HaloFringes.Value = 100;
    EXPECT_FALSE(Same(*later.Run(*in), *first));
    stage.core.Streaks.Value = later.core.Streaks.Value = 0;
    EXPECT_TRUE(Same(*later.Run(*in), *stage.Run(*in)));
}

TEST_F(FlareFrame, LightsMayComeFromAnotherPictureAndAreAdded) {
    const Picture night = Night();
    const Picture light = stage.Run(*Flat(90, 70, 0), *night);
    const Picture out = stage.Run(*Flat(90, 70, 1000), *night);
    int lit = 0;
    for (int i = 0; i < 90 * 70; ++i) {
        const u16* add = light->Pixels + 4 * i;
        EXPECT_EQ(add[3], (5 * add[0] + 8 * add[1] + 3 * add[2]) >> 4);
        for (int c = 0; c < 4; ++c) EXPECT_EQ(out->Pixels[4 * i + c], std::min(add[c] + 1000, 32767));
        lit += add[3] > 0;
    }
    EXPECT_GT(lit, 1000);
}

TEST_F(FlareFrame, HaloKeepsItsSizeInTheFrame) {
    stage.core.Streaks.Value = stage.core.HaloFringes.Value = 0;
    stage.core.GlowStrength.Value = 0.0;
    stage.core.Aperture.Value = 1.0;
    const auto radius = [&](int width) {
        const Picture out =
            stage.Run(*Flat(width, 200, 0), *Spot(width, 200, width / 2, 100, 32767, 32767, 32767));
        int x = width / 2;
        while (out->Rows[100][4 * x] > 0) ++x;
        return x - width / 2;
    };
    const int small = radius(360);
    EXPECT_GT(small, 10);
    EXPECT_NEAR(radius(720), 2 * small, 4);
}

TEST_F(FlareFrame, ApertureWithoutADarkRingLeavesThePicture) {
    const Picture in = Night();
    in->WidthScale = 1.0f;
    for (double aperture : {0.0, -4.0, 0.0006, std::nan("")}) {
        stage.core.Aperture.Value = aperture;
        EXPECT_TRUE(Same(*stage.Run(*in), *in));
        stage.core.LightMapOnly.Value = 1;
        EXPECT_TRUE(Same(*stage.Run(*in), *in));
        stage.core.LightMapOnly.Value = 0;
    }
}

TEST_F(FlareFrame, ContrastBendsTheCurve) {
    stage.core.Streaks.Value = 0;
    const Picture dark = Flat(90, 70, 0);
    const Picture spot = Spot(90, 70, 45, 35, 32767, 32767, 32767);
    const auto at = [&](double contrast) {
        stage.core.Contrast.Value = contrast;
        return static_cast<int>(stage.Run(*dark, *spot)->Rows[35][4 * 46]);
    };
    const int linear = at(100.0);
    EXPECT_GT(linear, 0);
    EXPECT_LT(at(50.0), linear);
    EXPECT_GT(at(200.0), linear);
    EXPECT_EQ(at(0.0), 0);              // everything below the top is dark
    stage.core.Contrast.Value = -100.0; // darkness itself becomes white
    EXPECT_TRUE(Same(*stage.Run(*dark, *spot), *Flat(90, 70, 32767)));
}

TEST_F(FlareFrame, SurvivesHostileValues) {
    const double inf = std::numeric_limits<double>::infinity();
    const Picture in = Night(40, 30);
    stage.core.Reflections.Value = 2;
    for (FloatControlK7 Flare::*control :
         {&Flare::HaloStrength, &Flare::HaloFrnStr, &Flare::Contrast, &Flare::Reflectivity, &Flare::ReflScale,
          &Flare::MonoStreak, &Flare::StreakStrength, &Flare::GlowRadius, &Flare::GlowStrength}) {
        const double usual = (stage.core.*control).Value;
        for (double value : {inf, -inf, std::nan(""), 1e30, -1e30, 0.0}) {
            (stage.core.*control).Value = value;
            const Picture out = stage.Run(*in);
            for (int i = 0; i < 40 * 30 * 4; ++i) ASSERT_LE(out->Pixels[i], 32767);
        }
        (stage.core.*control).Value = usual;
    }
}

} // namespace
} // namespace k7::test
