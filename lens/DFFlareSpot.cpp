#include "frame/adapter/OverlayOperatorK7.h"
#include "frame/adapter/Registration.h"
#include "lens/FlareSpot.h"

namespace k7 {
namespace {

class DFFlareSpot : public OverlayOperatorK7 {
public:
    explicit DFFlareSpot(const OperatorArguments& arguments) : OverlayOperatorK7(arguments) {
        FlareSpot& core = MakeCore<FlareSpot>();
        Page("K7 Flarespot");
        Add(core.StartControl, {"Start", "Srce"}, Offset{0.9, 0.9});
        Add(core.EndControl, {"End", "Imag"}, Offset{0.1, 0.1});
        Add(core.RadiusControl, {"Radius", "SrcR"}, Slider{10.0, 2.0, 200.0});
        Add(core.MinScaleControl, {"Min Scale", "MinS"}, Slider{20.0, 5.0, 200.0});
        Add(core.MaxScaleControl, {"Max Scale", "MaxS"}, Slider{124.4, 1.0, 300.0});
        Add(core.BrightnessControl, {"Brightness", "Brig"}, Slider{10.0, 1.0, 100.0});
        Add(core.SaturationControl, {"Saturation", "MSat"}, Slider{100.0, 5.0, 100.0});
        Add(core.DefocusControl, {"Defocus", "Defo"}, Slider{10.0, 1.0, 100.0});
        Add(core.SidesControl, {"Source Sides", "SrcS"}, Slider{19, 3, 80});
        Add(core.LensControl, {"Lens", "Lens"},
            Combo{{"Angulon 21mm", "Summicron 35mm", "Summilux 50mm", "Tele-Elmar 135mm", "User Defined"}});
        Add(core.EdgeBoostControl, {"Edge boost", "EBoo"}, Check{1});
        Add(core.FileControl, {"Lens File", "UseF"}, FileName{kDefaultLensFile});
        Page("Colour");
        Add(core.MoreControl, {"More Elements", "More"}, Slider{0, 0, 10});
        Add(core.RandomControl, {"Random", "Seed"}, Screw{557, 0, 999, {}, 999});
        Add(core.ColourStartControl, {"Colour Start", "Cou"},
            ColourSwatch{0.00816358, 0.00816358, 0.538949, 0.542229, 1});
        Add(core.ColourEndControl, {"Colour End", "Ovu"},
            ColourSwatch{0.00816358, 0.389639, 0.538949, 0.542229, 2});
        Add(core.OverrideControl, {"Colour Override", "ClOv", kChange}, Check{0});
        AddMainImage(core.Input, "Background");
        AddImageOutput(core.Output);

        AddWidget(core.Line, {0, 65535, 0}, core.EndControl, core.StartControl);
        AddWidget(core.Source, {65535, 65535, 0}, core.StartControl);
        AddWidget(core.Target, {65535, 0, 0}, core.EndControl);

        OnChange(core.OverrideControl, [&core](double) { core.RefreshControls(); });
    }

private:
    static constexpr const char* kDefaultLensFile = R"(C:\Program Files\Quorvane\Data\my_lens.txt)";
};

const ToolRegistration<DFFlareSpot> tool(
    {108, "FlareSpot", "FlS",
     "FlareSpot simulates the bright shapes sometimes seen in lenses when very bright light sources are in "
     "the scene.",
     kWritesControls}); // the lens becomes a built-in one if its file cannot be read

} // namespace
} // namespace k7
