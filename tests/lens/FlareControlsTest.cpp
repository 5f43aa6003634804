#include "lens/Flare.h"

#include "tests/support/FakeInput.h"

#include <gtest/gtest.h>

namespace k7::test {
namespace {

/// Flare with an input in memory behind each control.
class FlareControls : public testing::Test {
protected:
    FlareControls() {
        ControlK7* const controls[] = {
            &core.Aperture,       &core.HaloFringes, &core.HaloStrength, &core.HaloFrnStr,
            &core.Contrast,       &core.Reflections, &core.Reflectivity, &core.ReflScale,
            &core.Streaks,        &core.MonoStreak,  &core.StreakLength, &core.StreakRot,
            &core.StreakStrength, &core.GlowRadius,  &core.GlowStrength, &core.LightMapOnly,
            &core.MatchScales,    &core.ScaleY,      &core.LowLight,     &core.HighLight};
        int i = 0;
        for (ControlK7* control : controls) control->Input[0] = &inputs[i++];
        for (int c = 0; c < 4; ++c) {
            core.Low.Input[c] = &low[c];
            core.High.Input[c] = &high[c];
        }
    }
    static FakeInput& Of(ControlK7& control) { return static_cast<FakeInput&>(*control.Input[0]); }

    Flare core;
    FakeInput inputs[20], low[4], high[4];
};

TEST_F(FlareControls, MapOnlyHidesTheLookOfTheLight) {
    Of(core.LightMapOnly).X = 1;
    core.LightMapOnlyChanged();
    for (ControlK7* control :
         {static_cast<ControlK7*>(&core.Aperture), static_cast<ControlK7*>(&core.Reflections),
          static_cast<ControlK7*>(&core.GlowStrength)})
        EXPECT_FALSE(Of(*control).Shown);
    EXPECT_TRUE(Of(core.ScaleY).Shown);
    Of(core.LightMapOnly).X = 0;
    core.LightMapOnlyChanged();
    EXPECT_TRUE(Of(core.Aperture).Shown);
    EXPECT_FALSE(Of(core.Reflectivity).Shown);
}

TEST_F(FlareControls, GhostsBringTheirControls) {
    Of(core.Reflections).X = 3;
    core.ReflectionsChanged();
    EXPECT_TRUE(Of(core.Reflectivity).Shown);
    EXPECT_TRUE(Of(core.ReflScale).Shown);
    Of(core.LightMapOnly).X = 1;
    core.LightMapOnlyChanged();
    EXPECT_TRUE(Of(core.ReflScale).Shown); // ghosts show in the map
    Of(core.Reflections).X = 0;
    core.RefreshControls();
    EXPECT_FALSE(Of(core.ReflScale).Shown);
}

TEST_F(FlareControls, MatchedScalesHideTheSecond) {
    Of(core.MatchScales).X = 3;
    core.MatchScalesChanged();
    EXPECT_FALSE(Of(core.ScaleY).Shown);
    Of(core.MatchScales).X = 0;
    core.MatchScalesChanged();
    EXPECT_TRUE(Of(core.ScaleY).Shown);
}

TEST_F(FlareControls, SwatchAndLevelFollowEachOther) {
    core.LowLight.Value = 90.0;
    core.LowLightChanged(7.0);
    EXPECT_EQ(core.Low.Value[1], 29490);
    for (int c = 0; c < 3; ++c) EXPECT_FLOAT_EQ(static_cast<float>(low[c].X), 29490.0f / 32767.0f);
    EXPECT_EQ(low[3].X, 0.0);
    EXPECT_EQ(low[0].LastTime, 7.0);
    EXPECT_EQ(Of(core.LowLight).Writes, 0);

    core.High.Value[0] = 32767;
    core.High.Value[1] = 16384;
    core.High.Value[2] = 0;
    core.HighChanged(8.0);
    EXPECT_FLOAT_EQ(static_cast<float>(high[1].X), 16384.0f / 32767.0f); // 16383.67 rounded
    EXPECT_FLOAT_EQ(static_cast<float>(Of(core.HighLight).X), 16384.0f / 32767.0f * 100.0f);
    EXPECT_TRUE(core.HighLight.Changing) << "its echo is to be ignored";
}

} // namespace
} // namespace k7::test
