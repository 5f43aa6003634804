#include "frame/adapter/OverlayOperatorK7.h"
#include "frame/adapter/Registration.h"
#include "motion/MoBlur.h"

namespace k7 {
namespace {

class DFMoBlur : public OverlayOperatorK7 {
public:
    explicit DFMoBlur(const OperatorArguments& arguments) : OverlayOperatorK7(arguments) {
        MoBlur& core = MakeCore<MoBlur>();
        SetAttrs({{host::kTagFramesBefore, 1}});
        Page("K7 MoBlur");
        Add(core.Prss, {"Apply Motion Blur", "Prss", kChange | kUnmirrored}, Check{0});
        Add(core.Maps, {"MaxSteps", "Maps"}, Slider{5, 2, 200});
        Add(core.LTsh, {"LThresh", "LTsh"}, Slider{2.0, 0.5, 40});
        Add(core.LSle, {"LScale", "LSle"}, Slider{1.0, 0.1, 10});
        Add(core.Prur, {"Pre-Blur", "Prur"}, Slider{2.5, 0.1, 5});
        Add(core.Stht, {"Start Weight", "Stht"}, Slider{1.0, 1, 50});
        Add(core.Enht, {"End Weight", "Enht"}, Slider{1.0, 1, 50});
        Add(core.Sers, {"Display Motion Vectors", "Sers", kHidden}, Check{0});
        InPixels(core.Prur);
        IdleAt(core.Prss, 0);
        Page("ROI");
        Add(core.Aund, {"Auto Bound", "Aund", kChange | kUnmirrored}, Check{0});
        Add(core.ABsh, {"AB Thresh", "ABsh", kHidden}, Slider{40.0, 0.1, 100});
        Add(core.Auey, {"AutoKey", "Auey", kHidden | kChange | kUnmirrored}, Check{0});
        Add(core.Cere, {"Centre", "Cere"}, Offset{0.5, 0.5});
        Add(core.Maes, {"Match Scales", "Maes", kChange | kUnmirrored}, Check{0});
        Add(core.XSle, {"X Scale", "XSle"}, Slider{0.5, 0, 2});
        Add(core.YSle, {"Y Scale", "YSle"}, Slider{0.5, 0, 2});
        IdleAt(core.Aund, 0);
        AddMainImage(core.ImageInput, "Input");
        AddSecondImage(core.MatteInput, "Matte", SecondImage::AtOtherTimes);
        AddImageOutput(core.Output);
        AddWidget(core.CentreWidget, kWhite, core.Cere);
        AddWidget(core.RegionWidget, {41120, 8224, 61680}, core.Cere, core.XSle, core.YSle);

        OnChange(core.Prss, [&core](double) { core.ApplyBlurChanged(); });
        OnChange(core.Maes, [&core](double) { core.RefreshControls(); });
        OnChange(core.Aund, [&core](double time) { core.AutoBoundChanged(time); });
        OnChange(core.Auey, [&core](double time) { core.AutoBoundChanged(time); });
    }
};

const ToolRegistration<DFMoBlur> tool({109, "MoBlur", "MoB",
                                       "Motion analysis over consecutive frames to derive a natural motion "
                                       "blur, affecting only the moving regions of the clip.",
                                       kWritesControls | kShowsDivision});

} // namespace
} // namespace k7
