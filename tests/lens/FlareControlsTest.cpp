#include "lens/Flare.h"
#include "lens/Flare2.h"
#include "lens/FlareSpot.h"
#include "tests/support/FakeInput.h"

#include <gtest/gtest.h>

#include <deque>
#include <initializer_list>
#include <utility>
#include <vector>

namespace k7::test {
namespace {

using List = std::initializer_list<ControlK7*>;

/// A core without a frame, with host inputs in memory behind its controls.
template <class Core>
class ControlsOf : public testing::Test {
protected:
    void Connect(List controls) {
        for (ControlK7* control : controls)
            for (auto& input : control->Input) input = &inputs_.emplace_back();
    }
    static FakeInput& Of(ControlK7& control, int i = 0) { return static_cast<FakeInput&>(*control.Input[i]); }

    Core core;

private:
    std::deque<FakeInput> inputs_;
};

class FlareControls : public ControlsOf<Flare> {
protected:
    FlareControls() {
        Connect({&core.Aperture,    &core.HaloFringes,  &core.HaloStrength, &core.HaloFrnStr,
                 &core.Contrast,    &core.Reflections,  &core.Reflectivity, &core.ReflScale,
                 &core.Streaks,     &core.MonoStreak,   &core.StreakLength, &core.StreakRot,
                 &core.GlowRadius,  &core.GlowStrength, &core.LightMapOnly, &core.StreakStrength,
                 &core.MatchScales, &core.ScaleY,       &core.LowLight,     &core.HighLight,
                 &core.Low,         &core.High});
    }
};

TEST_F(FlareControls, HideWhatHasNoEffect) {
    const struct {
        int mapOnly, ghosts, match;
        bool look, ghostControls, scaleY;
    } cases[] = {{0, 0, 3, true, false, false},
                 {1, 0, 0, false, false, true},
                 {1, 3, 3, false, true, false}}; // ghosts show in the map
    for (const auto& c : cases) {
        Of(core.LightMapOnly).X = c.mapOnly;
        Of(core.Reflections).X = c.ghosts;
        Of(core.MatchScales).X = c.match;
        core.RefreshControls();
        for (ControlK7* control : List{&core.Aperture, &core.Reflections, &core.GlowStrength})
            EXPECT_EQ(Of(*control).Shown, c.look);
        EXPECT_EQ(Of(core.Reflectivity).Shown, c.ghostControls);
        EXPECT_EQ(Of(core.ReflScale).Shown, c.ghostControls);
        EXPECT_EQ(Of(core.ScaleY).Shown, c.scaleY);
    }
    for (int ghosts : {0, 2}) { // where their number changes
        Of(core.Reflections).X = ghosts;
        core.ReflectionsChanged();
        EXPECT_EQ(Of(core.Reflectivity).Shown, ghosts == 2);
        EXPECT_EQ(Of(core.ReflScale).Shown, ghosts == 2);
    }
}

TEST_F(FlareControls, SwatchAndLevelFollowEachOther) {
    core.LowLight.Value = 90.0;
    core.LowLightChanged(7.0);
    EXPECT_EQ(core.Low.Value[1], 29490);
    for (int c = 0; c < 3; ++c) EXPECT_FLOAT_EQ(static_cast<float>(Of(core.Low, c).X), 29490.0f / 32767.0f);
    EXPECT_EQ(Of(core.Low, 3).X, 0.0);
    EXPECT_EQ(Of(core.Low).LastTime, 7.0);
    EXPECT_EQ(Of(core.LowLight).Writes, 0);

    core.High.Value[0] = 32767;
    core.High.Value[1] = 16384;
    core.High.Value[2] = 0;
    core.HighChanged(8.0);
    EXPECT_FLOAT_EQ(static_cast<float>(Of(core.High, 1).X), 16384.0f / 32767.0f); // 16383.67 rounded
    EXPECT_FLOAT_EQ(static_cast<float>(Of(core.HighLight).X), 16384.0f / 32767.0f * 100.0f);
    EXPECT_TRUE(core.HighLight.Changing) << "its echo is to be ignored";
}

class Flare2Controls : public ControlsOf<Flare2> {
protected:
    Flare2Controls() {
        Connect({&core.Halo,         &core.Aperture,  &core.HaloFringes,  &core.HaloStr,
                 &core.HaloFrnStr,   &core.Streak,    &core.Streaks,      &core.MonoStreak,
                 &core.StreakLength, &core.StreakRot, &core.StreakStr,    &core.Glow,
                 &core.GlowRadius,   &core.Reflect,   &core.GlowStrength, &core.Reflection,
                 &core.Reflections,  &core.ReflScale, &core.Reflectivity, &core.ColourFrom,
                 &core.LightColour});
    }
};

TEST_F(Flare2Controls, StylesWriteTheirRows) {
    using Row = std::vector<std::pair<ControlK7*, double>>;
    const auto expect = [](const Row& row, double time) {
        for (const auto& [control, value] : row) {
            EXPECT_EQ(Of(*control).X, value);
            EXPECT_EQ(Of(*control).LastTime, time);
        }
    };
    Of(core.Halo).X = 2; // the third entry
    core.HaloChanged(4.0);
    expect({{&core.Aperture, 0.2}, {&core.HaloFringes, 150}, {&core.HaloStr, 4}, {&core.HaloFrnStr, 100}}, 4);
    Of(core.Streak).X = 1;
    core.StreakChanged(5.0);
    expect({{&core.Streaks, 23}, {&core.MonoStreak, 0}, {&core.StreakLength, 175}}, 5.0);
    expect({{&core.StreakRot, 90}, {&core.StreakStr, 2.0}}, 5.0);
    core.GlowChanged(6.0);
    expect({{&core.GlowRadius, 10}, {&core.GlowStrength, 10}}, 6.0);

    Of(core.Reflection).X = 1;
    core.ReflectionChanged(7.0);
    expect({{&core.Reflections, 5}, {&core.Reflectivity, 50}, {&core.ReflScale, 1}}, 7.0);
    Of(core.Reflection).X = 0;
    core.ReflectionChanged(8.0); // this style does not change the other two
    expect({{&core.Reflections, 0}}, 8.0);
    expect({{&core.Reflectivity, 50}, {&core.ReflScale, 1}}, 7.0);
    Of(core.Reflection).X = 17; // no such entry
    core.ReflectionChanged(9.0);
    expect({{&core.Reflections, 0}}, 8.0);
}

TEST_F(Flare2Controls, HideWhatHasNoEffect) {
    for (int ghosts : {0, 1}) {
        Of(core.Reflections).X = ghosts;
        Of(core.ColourFrom).X = ghosts; // 0: the swatch, 1: "Clip"
        core.RefreshControls();
        for (ControlK7* control : List{&core.Reflectivity, &core.ReflScale, &core.Reflect})
            EXPECT_EQ(Of(*control).Shown, ghosts == 1);
        EXPECT_EQ(Of(core.LightColour, 1).Shown, ghosts == 0);
    }
}

using FlareSpotControls = ControlsOf<FlareSpot>;

TEST_F(FlareSpotControls, ColoursShowWithTheOverride) {
    Connect({&core.OverrideControl, &core.ColourStartControl, &core.ColourEndControl});
    for (bool on : {false, true}) {
        Of(core.OverrideControl).X = on;
        core.RefreshControls();
        for (ControlK7* control : List{&core.ColourStartControl, &core.ColourEndControl})
            for (int c = 0; c < 3; ++c) EXPECT_EQ(Of(*control, c).Shown, on);
    }
}

} // namespace
} // namespace k7::test
