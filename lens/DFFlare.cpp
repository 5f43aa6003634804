#include "frame/adapter/OverlayOperatorK7.h"
#include "frame/adapter/Registration.h"
#include "lens/Flare.h"

namespace k7 {
namespace {

class DFFlare : public OverlayOperatorK7 {
public:
    explicit DFFlare(const OperatorArguments& arguments)
        : OverlayOperatorK7(arguments)
        , core_(MakeCore<Flare>()) {
        AddLightControls();
        AddStreakControls();
        AddHaloControls();
        AddSecondImage(core_.LightInput, "Light Map", SecondImage::FitToMain);
        AddMainImage(core_.Background, "Background");
        AddImageOutput(core_.Output);
        AddWidget(core_.CentreCross, kWhite, core_.Centre);
        AddWidget(core_.ScaleBox, kWhite, core_.Centre, core_.ScaleX, core_.ScaleY);
        AddReactions();
    }

private:
    void AddLightControls() {
        Page("K7 Flare");
        Add(core_.LightMapOnly, {"Light Map Only", "LMOn", kChange | kUnmirrored}, Check{1});
        AidAt(core_.LightMapOnly, 1);
        Add(core_.Centre, {"Centre", "Cent"}, Offset{0.2, 0.3});
        Add(core_.MatchScales, {"Match Scales", "Mtch", kChange | kUnmirrored}, Check{3});
        Add(core_.ScaleX, {"Scale X", "XSca"}, Slider{0.2, 0.01, 2.0});
        Add(core_.ScaleY, {"Scale Y", "YSca", kHidden}, Slider{0.2, 0.01, 2.0});
        Add(core_.LowLight, {"Low Light", "LoLi", kChange | kUnmirrored}, Slider{90, 0, 100});
        Add(core_.Low, {"Low", "Loo", kChange | kUnmirrored},
            ColourSwatch{0.900008, 0.900008, 0.900008, 0, 1});
        Add(core_.HighLight, {"High Light", "HiLi", kChange | kUnmirrored}, Slider{100, 0, 100});
        Add(core_.High, {"High", "Hio", kChange | kUnmirrored}, ColourSwatch{1.0, 1.0, 1.0, 0, 2});
    }

    void AddStreakControls() {
        Page("Streaks+");
        Add(core_.Streaks, {"Streaks", "Stre", kHidden}, Slider{2, 0, 1000});
        Add(core_.MonoStreak, {"Mono Streak", "MonS", kHidden}, Slider{5, 0, 100});
        Add(core_.StreakLength, {"Streak Length", "SLen", kHidden}, Slider{75, 0, 1000});
        Add(core_.StreakRot, {"Streak Rot", "SRot", kHidden}, Slider{0, 0, 360});
        Add(core_.StreakStrength, {"Streak Strength", "SStr", kHidden}, Slider{10, 0.1, 100});
        Add(core_.GlowRadius, {"Glow Radius", "GloR", kHidden}, Slider{10, 1, 200});
        Add(core_.GlowStrength, {"Glow Strength", "GlSt", kHidden}, Slider{40, 0.1, 100});
    }

    void AddHaloControls() {
        Page("Halos+");
        Add(core_.Aperture, {"Aperture (mm)", "Aper", kHidden}, Slider{4, 0.1, 20.1});
        Add(core_.HaloFringes, {"Halo Fringes", "HalF", kHidden}, Slider{100, 0, 100});
        Add(core_.HaloStrength, {"HaloStrength", "HalS", kHidden}, Slider{50, 0.1, 100});
        Add(core_.HaloFrnStr, {"Halo FrnStr", "HaFS", kHidden}, Slider{50, 0, 100});
        Add(core_.Contrast, {"Contrast", "Cont", kHidden}, Slider{135, 0.5, 300});
        Add(core_.Reflections, {"Reflections", "Refs", kChange | kHidden | kUnmirrored}, Slider{0, 0, 10});
        Add(core_.Reflectivity, {"Reflectivity", "Refy", kHidden}, Slider{20, 0, 100});
        Add(core_.ReflScale, {"Refl Scale", "ReSc", kHidden}, Slider{100, 10, 1000});
    }

    void AddReactions() {
        OnChange(core_.Reflections, [this](double) { core_.ReflectionsChanged(); });
        OnChange(core_.MatchScales, [this](double) { core_.MatchScalesChanged(); });
        OnChange(core_.LightMapOnly, [this](double) { core_.LightMapOnlyChanged(); });
        OnChange(core_.LowLight, [this](double time) { core_.LowLightChanged(time); });
        OnChange(core_.Low, [this](double time) { core_.LowChanged(time); });
        OnChange(core_.HighLight, [this](double time) { core_.HighLightChanged(time); });
        OnChange(core_.High, [this](double time) { core_.HighChanged(time); });
    }

    Flare& core_;
};

const ToolRegistration<DFFlare> tool({106, "Flare", "Flr",
                                      " Streaks and Flares controlled by the intensity light map input.",
                                      kCarriesOver});

} // namespace
} // namespace k7
