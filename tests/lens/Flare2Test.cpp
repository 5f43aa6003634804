#include "lens/Flare2.h"

#include "tests/support/FakeInput.h"
#include "tests/support/FlareDefaults.h"

#include <cmath>
#include <thread>

namespace k7::test {
namespace {

/// Flare2 at its controls' defaults, over a picture of 101 x 81 pixels that lie square.
class Flare2Frame : public testing::Test, protected FlareStage<Flare2> {
protected:
    using FlareStage::Run;
    static constexpr int kWidth = 101;
    static constexpr int kHeight = 81;

    /// Shows lights as what they are: a glow of one pixel whose word is a fifth of the light's, and nothing
    /// else.
    void ShowLights() {
        core.Streaks.Value = 0;
        core.HaloStr.Value = 0.0;
        core.GlowRadius.Value = 0.0;
        core.GlowStrength.Value = 100.0;
        core.Contrast.Value = 100.0;
    }

    /// The lights over a dark picture.
    Picture Lights() { return Run(*Flat(kWidth, kHeight, 0)); }

    static PixelBox LitBox(const K7Image& picture, int* count) {
        PixelBox box{picture.Width, picture.Height, 0, 0};
        *count = 0;
        for (int y = 0; y < picture.Height; ++y)
            for (int x = 0; x < picture.Width; ++x) {
                if (!picture.Rows[y][4 * x]) continue;
                ++*count;
                box.Left = std::min(box.Left, x);
                box.Right = std::max(box.Right, x + 1);
                box.Bottom = std::min(box.Bottom, y);
                box.Top = std::max(box.Top, y + 1);
            }
        return box;
    }
};

TEST_F(Flare2Frame, BoostIsTheSizeOfTheLight) {
    ShowLights();
    const int sizes[][2] = {{1, 1}, {3, 1}, {3, 3}, {5, 3}, {5, 5}, {7, 5}, {7, 7}, {9, 7}, {9, 9}};
    for (int boost = 1; boost <= 9; ++boost) {
        core.Boost.Value = boost;
        int count;
        const PixelBox box = LitBox(*Lights(), &count);
        EXPECT_EQ(box.Width(), sizes[boost - 1][0]) << boost;
        EXPECT_EQ(box.Height(), sizes[boost - 1][1]) << boost;
        EXPECT_EQ(count, box.Width() * box.Height());
        EXPECT_EQ(box.Left + box.Width() / 2, 30); // 101 x 0.3
        EXPECT_EQ(box.Bottom + box.Height() / 2, 24);
    }
    for (int boost : {0, -3, -2147483647 - 1}) {
        core.Boost.Value = boost;
        int count;
        LitBox(*Lights(), &count);
        EXPECT_EQ(count, 0) << boost;
    }
}

TEST_F(Flare2Frame, SourceOutsideTheFrameGivesNoLight) {
    const Picture in = Noise(kWidth, kHeight);
    for (const auto& [x, y] : {std::pair{1.2, 0.5}, {0.5, -0.4}, {1e300, 0.5}, {0.5, -1e300}}) {
        core.Source.Value = {x, y};
        EXPECT_TRUE(Same(*Run(*in), *in)) << x << " " << y;
    }
    core.Source.Value = {-0.5 / kWidth, 0.5}; // less than a pixel outside counts as column 0
    ShowLights();
    int count;
    EXPECT_EQ(LitBox(*Lights(), &count).Left, 0);
    EXPECT_EQ(count, 1);
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
    const Picture out = Lights();
    const u16* row = out->Rows[40];
    EXPECT_GT(row[4 * 20], row[4 * 65]);
    EXPECT_GT(row[4 * 65], row[4 * 80]);
    EXPECT_GT(row[4 * 80], 0);
    int count;
    LitBox(*out, &count);
    EXPECT_EQ(count, 3);

    core.ReflScale.Value = -1.0; // on the side of the light
    EXPECT_GT(Lights()->Rows[40][4 * 34], 0);
    core.ReflScale.Value = 0.0;
    LitBox(*Lights(), &count);
    EXPECT_EQ(count, 2);
    EXPECT_GT(Lights()->Rows[40][4 * 50], 0);
}

TEST_F(Flare2Frame, IsTheSameForEveryThreadCountFrameAndInstance) {
    const Picture in = Noise(kWidth, kHeight);
    core.Reflections.Value = 4;
    core.Boost.Value = 3;
    const Picture first = Run(*in);
    EXPECT_FALSE(Same(*first, *in));
    for (int threads : {2, 3, 7, 300}) EXPECT_TRUE(Same(*Run(*in, threads), *first)) << threads;
    core.GlowRadius.Value = 11.0;
    EXPECT_FALSE(Same(*Run(*in), *first));
    core.GlowRadius.Value = 40.0;
    EXPECT_TRUE(Same(*Run(*in), *first));

    Picture there;
    std::thread other([&] {
        FlareStage<Flare2> second;
        second.core.Reflections.Value = 4;
        second.core.Boost.Value = 3;
        there = second.Run(*in);
    });
    EXPECT_TRUE(Same(*Run(*in), *first));
    other.join();
    EXPECT_TRUE(Same(*there, *first));
}

TEST_F(Flare2Frame, HaloIsCentredOnTheLight) {
    core.Streaks.Value = core.HaloFringes.Value = 0;
    core.GlowStrength.Value = 0.0;
    core.HaloStr.Value = 1.0;
    core.Source.Value = {0.5, 0.5};
    const Picture out = Lights();
    int count;
    const PixelBox box = LitBox(*out, &count);
    EXPECT_GT(count, 100);
    EXPECT_EQ(box.Left + box.Right, 101);
    EXPECT_EQ(box.Bottom + box.Top, 81);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) ASSERT_EQ(out->Rows[y][4 * x], out->Rows[80 - y][4 * (100 - x)]);
}

TEST_F(Flare2Frame, HostileValuesGiveAFrame) {
    const Picture in = Noise(40, 30);
    const double inf = std::numeric_limits<double>::infinity();
    FloatControlK7 Flare2::*const controls[] = {
        &Flare2::Aperture,  &Flare2::HaloStr,    &Flare2::HaloFrnStr,   &Flare2::MonoStreak,
        &Flare2::StreakStr, &Flare2::GlowRadius, &Flare2::GlowStrength, &Flare2::Reflectivity,
        &Flare2::ReflScale, &Flare2::Contrast};
    for (auto control : controls)
        for (double value : {inf, -inf, std::nan(""), 1e30, -1e30, 0.0}) {
            FlareStage<Flare2> hostile;
            hostile.core.Reflections.Value = 3;
            (hostile.core.*control).Value = value;
            const Picture out = hostile.Run(*in);
            for (int i = 0; i < 40 * 30 * 4; ++i) ASSERT_LE(out->Pixels[i], 32767);
        }
}

/// Flare2 with an input in memory behind each control that styles write.
class Flare2Controls : public testing::Test {
protected:
    Flare2Controls() {
        ControlK7* const controls[] = {
            &core.Halo,        &core.Aperture,     &core.HaloFringes, &core.HaloStr,      &core.HaloFrnStr,
            &core.Streak,      &core.Streaks,      &core.MonoStreak,  &core.StreakLength, &core.StreakRot,
            &core.StreakStr,   &core.Glow,         &core.GlowRadius,  &core.GlowStrength, &core.Reflection,
            &core.Reflections, &core.Reflectivity, &core.ReflScale,   &core.Reflect,      &core.ColourFrom};
        int i = 0;
        for (ControlK7* control : controls) control->Input[0] = &inputs[i++];
        for (int c = 0; c < 4; ++c) core.LightColour.Input[c] = &colour[c];
    }
    static FakeInput& Of(ControlK7& control) { return static_cast<FakeInput&>(*control.Input[0]); }

    Flare2 core;
    FakeInput inputs[20], colour[4];
};

TEST_F(Flare2Controls, StylesWriteTheirRows) {
    Of(core.Halo).X = 2; // the third entry
    core.HaloChanged(4.0);
    EXPECT_EQ(Of(core.Aperture).X, 0.2);
    EXPECT_EQ(Of(core.HaloFringes).X, 150);
    EXPECT_EQ(Of(core.HaloStr).X, 4.0);
    EXPECT_EQ(Of(core.HaloFrnStr).X, 100);
    EXPECT_EQ(Of(core.HaloFrnStr).LastTime, 4.0);

    Of(core.Streak).X = 1;
    core.StreakChanged(5.0);
    EXPECT_EQ(Of(core.Streaks).X, 23);
    EXPECT_EQ(Of(core.MonoStreak).X, 0);
    EXPECT_EQ(Of(core.StreakLength).X, 175);
    EXPECT_EQ(Of(core.StreakRot).X, 90);
    EXPECT_EQ(Of(core.StreakStr).X, 2.0);

    core.GlowChanged(6.0);
    EXPECT_EQ(Of(core.GlowRadius).X, 10);
    EXPECT_EQ(Of(core.GlowStrength).X, 10);
}

TEST_F(Flare2Controls, FirstReflectionStyleLeavesTheOthersAlone) {
    Of(core.Reflection).X = 1;
    core.ReflectionChanged(1.0);
    EXPECT_EQ(Of(core.Reflections).X, 5);
    EXPECT_EQ(Of(core.Reflectivity).X, 50);
    EXPECT_EQ(Of(core.ReflScale).X, 1.0);
    Of(core.Reflection).X = 0;
    core.ReflectionChanged(1.0);
    EXPECT_EQ(Of(core.Reflections).X, 0);
    EXPECT_EQ(Of(core.Reflectivity).Writes, 1);
    EXPECT_EQ(Of(core.ReflScale).Writes, 1);
    Of(core.Reflection).X = 17; // no such entry
    core.ReflectionChanged(1.0);
    EXPECT_EQ(Of(core.Reflections).Writes, 2);
}

TEST_F(Flare2Controls, HideWhatHasNoEffect) {
    core.RefreshControls();
    for (ControlK7* control :
         {static_cast<ControlK7*>(&core.Reflectivity), static_cast<ControlK7*>(&core.ReflScale),
          static_cast<ControlK7*>(&core.Reflect)})
        EXPECT_FALSE(Of(*control).Shown);
    EXPECT_TRUE(colour[1].Shown);
    Of(core.Reflections).X = 1;
    Of(core.ColourFrom).X = 1; // "Clip"
    core.RefreshControls();
    EXPECT_TRUE(Of(core.Reflect).Shown);
    EXPECT_FALSE(colour[1].Shown);
}

} // namespace
} // namespace k7::test
