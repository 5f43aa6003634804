#include "frame/adapter/OverlayOperatorK7.h"
#include "frame/adapter/Registration.h"
#include "lens/Flare2.h"

namespace k7 {
namespace {

class DFFlare2 : public OverlayOperatorK7 {
public:
    explicit DFFlare2(const OperatorArguments& arguments)
        : OverlayOperatorK7(arguments)
        , core_(MakeCore<Flare2>()) {
        AddLightControls();
        AddStreakControls();
        AddSecondImage(core_.LightInput, "Light Colours", SecondImage::FitToMain);
        AddMainImage(core_.Background, "Background");
        AddImageOutput(core_.Output);
        AddWidget(core_.SourceCross, {65535, 0, 65535}, core_.Source);
        AddWidget(core_.ReflectCross, {0, 0, 65535}, core_.Reflect);
        AddReactions();
    }

private:
    void AddLightControls() {
        Page("K7 Flare2");
        Add(core_.Halo, {"Halo", "HalT", kChange | kUnmirrored}, Combo{{"Demo 1", "Demo 2", "Demo 3"}});
        Add(core_.Aperture, {"Aperture", "Aper"}, Slider{0.5, 0.1, 20});
        Add(core_.HaloStr, {"Halo Str", "HalS"}, Slider{10, 0, 100});
        Add(core_.HaloFringes, {"Halo Fringes", "HalF"}, Slider{100, 0, 200});
        Add(core_.HaloFrnStr, {"Halo FrnStr", "HaFS"}, Slider{50, 0, 100});
        Add(core_.Glow, {"Glow", "GTyp", kChange | kUnmirrored}, Combo{{"Demo1", " Demo 2", " Demo 3"}});
        Add(core_.GlowRadius, {"Glow Radius", "GloR"}, Slider{40, 1, 500});
        Add(core_.GlowStrength, {"Glow Strength", "GloS"}, Slider{50, 1, 500});
        Add(core_.LightColour, {"", "Cou"}, ColourSwatch{1.0, 0.732433, 0.0732433, 0, 1});
        Add(core_.ColourFrom, {"Colour From", "ColT", kChange | kUnmirrored}, Combo{{"Box", "Clip"}});
        Add(core_.Source, {"Source", "XYSr"}, Offset{0.3, 0.3});
        Add(core_.Boost, {"Boost", "Boos"}, Slider{1, 1, 9});
        Add(core_.Contrast, {"Contrast", "Cont"}, Slider{135, 5, 300});
    }

    void AddStreakControls() {
        Page("Streaks+");
        Add(core_.Streak, {"Streak", "STyp", kChange | kUnmirrored}, Combo{{"Demo 1", "Demo 2", "Demo 3"}});
        Add(core_.Streaks, {"Streaks", "Stks"}, Slider{5, 0, 1000});
        Add(core_.MonoStreak, {"Mono Streak", "MonS"}, Slider{5, 0, 100});
        Add(core_.StreakLength, {"Streak Length", "SLen"}, Slider{75, 0, 1000});
        Add(core_.StreakRot, {"Streak Rot", "SRot"}, Screw{.standard = 0, .lowest = 0, .highest = 360});
        Add(core_.StreakStr, {"Streak Str", "SStr"}, Slider{50, 0, 100});
        Add(core_.Reflection, {"Reflection", "RTyp", kChange | kUnmirrored},
            Combo{{"Demo 1", " Demo 2", " Demo 3"}});
        Add(core_.Reflections, {"Reflections", "Refs", kChange | kUnmirrored}, Slider{0, 0, 20});
        Add(core_.Reflectivity, {"Reflectivity", "Refy", kHidden}, Slider{20, 0.1, 100});
        Add(core_.ReflScale, {"Refl Scale", "RSca", kHidden}, Slider{0.1, -10.1, 10});
        Add(core_.Reflect, {"Reflect", "XYRf", kHidden}, Offset{0.7, 0.7});
    }

    void AddReactions() {
        OnChange(core_.Halo, [this](double time) { core_.HaloChanged(time); });
        OnChange(core_.Streak, [this](double time) { core_.StreakChanged(time); });
        OnChange(core_.Glow, [this](double time) { core_.GlowChanged(time); });
        OnChange(core_.Reflection, [this](double time) { core_.ReflectionChanged(time); });
        OnChange(core_.Reflections, [this](double) { core_.ReflectionsChanged(); });
        OnChange(core_.ColourFrom, [this](double) { core_.ColourFromChanged(); });
    }

    Flare2& core_;
};

const ToolRegistration<DFFlare2> tool({107, "Flare2", "Flr2",
                                       " Simpler version of Flare based on a user defined location.",
                                       kCarriesOver});

} // namespace
} // namespace k7
