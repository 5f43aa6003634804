#pragma once

#include "lens/Flare.h"
#include "lens/Flare2.h"
#include "tests/support/CoreRunner.h"

namespace k7::test {

/// The values of a new tool: the light map is shown.
inline void SetDefaults(Flare& core) {
    core.LightMapOnly.Value = 1;
    core.Centre.Value = {0.2, 0.3};
    core.MatchScales.Value = 1;
    core.ScaleX.Value = core.ScaleY.Value = 0.2;
    core.LowLight.Value = 90.0;
    core.HighLight.Value = 100.0;
    core.Streaks.Value = 2;
    core.MonoStreak.Value = 5.0;
    core.StreakLength.Value = 75;
    core.StreakStrength.Value = 10.0;
    core.GlowRadius.Value = 10.0;
    core.GlowStrength.Value = 40.0;
    core.Aperture.Value = 4.0;
    core.HaloFringes.Value = 100;
    core.HaloStrength.Value = 50.0;
    core.HaloFrnStr.Value = 50.0;
    core.Contrast.Value = 135.0;
    core.Reflectivity.Value = 20.0;
    core.ReflScale.Value = 100.0;
}

inline void SetDefaults(Flare2& core) {
    core.Aperture.Value = 0.5;
    core.HaloStr.Value = 10.0;
    core.HaloFringes.Value = 100;
    core.HaloFrnStr.Value = 50.0;
    core.GlowRadius.Value = 40.0;
    core.GlowStrength.Value = 50.0;
    core.LightColour.Value[0] = 32767;
    core.LightColour.Value[1] = 23999;
    core.LightColour.Value[2] = 2399;
    core.ColourFrom.Value = 1;
    core.Source.Value = {0.3, 0.3};
    core.Boost.Value = 1;
    core.Contrast.Value = 135.0;
    core.Streaks.Value = 5;
    core.MonoStreak.Value = 5.0;
    core.StreakLength.Value = 75;
    core.StreakStr.Value = 50.0;
    core.Reflectivity.Value = 20.0;
    core.ReflScale.Value = 0.1;
    core.Reflect.Value = {0.7, 0.7};
}

/// A flare at its controls' defaults, whose lights come from a picture of their own.
template <class Core>
class FlareStage {
public:
    FlareStage() { SetDefaults(core); }

    Picture Run(K7Image& background, K7Image& light, int threads = 1) {
        runner.owner.Threads = threads;
        core.LightInput.Image = &light;
        Picture output = runner.Run(background, core.Background);
        core.LightInput.Image = nullptr;
        return output;
    }
    Picture Run(K7Image& picture, int threads = 1) { return Run(picture, picture, threads); }

    CoreRunner<Core> runner;
    Core& core = runner.core;
};

} // namespace k7::test
