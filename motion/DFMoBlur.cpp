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
        Add(core.ApplyMotionBlur, {"Apply Motion Blur", "Prss", kChange | kUnmirrored}, Check{0});
        Add(core.MaxSteps, {"MaxSteps", "Maps"}, Slider{5, 2, 200});
        Add(core.Threshold, {"LThresh", "LTsh"}, Slider{2.0, 0.5, 40});
        Add(core.LengthScale, {"LScale", "LSle"}, Slider{1.0, 0.1, 10});
        Add(core.PreBlur, {"Pre-Blur", "Prur"}, Slider{2.5, 0.1, 5});
        Add(core.StartWeight, {"Start Weight", "Stht"}, Slider{1.0, 1, 50});
        Add(core.EndWeight, {"End Weight", "Enht"}, Slider{1.0, 1, 50});
        Add(core.DisplayVectors, {"Display Motion Vectors", "Sers", kHidden}, Check{0});
        InPixels(core.PreBlur);
        IdleAt(core.ApplyMotionBlur, 0);
        Page("ROI");
        Add(core.AutoBound, {"Auto Bound", "Aund", kChange | kUnmirrored}, Check{0});
        Add(core.BoundThreshold, {"AB Thresh", "ABsh", kHidden}, Slider{40.0, 0.1, 100});
        Add(core.AutoKey, {"AutoKey", "Auey", kHidden | kChange | kUnmirrored}, Check{0});
        Add(core.Centre, {"Centre", "Cere"}, Offset{0.5, 0.5});
        Add(core.MatchScales, {"Match Scales", "Maes", kChange | kUnmirrored}, Check{0});
        Add(core.ScaleX, {"X Scale", "XSle"}, Slider{0.5, 0, 2});
        Add(core.ScaleY, {"Y Scale", "YSle"}, Slider{0.5, 0, 2});
        IdleAt(core.AutoBound, 0);
        AddMainImage(core.ImageInput, "Input");
        AddSecondImage(core.MatteInput, "Matte", SecondImage::AtOtherTimes);
        AddImageOutput(core.Output);
        AddWidget(core.CentreWidget, kWhite, core.Centre);
        AddWidget(core.RegionWidget, {41120, 8224, 61680}, core.Centre, core.ScaleX, core.ScaleY);

        OnChange(core.ApplyMotionBlur, [&core](double) { core.ApplyBlurChanged(); });
        OnChange(core.MatchScales, [&core](double) { core.RefreshControls(); });
        OnChange(core.AutoBound, [&core](double time) { core.AutoBoundChanged(time); });
        OnChange(core.AutoKey, [&core](double time) { core.AutoBoundChanged(time); });
    }
};

const ToolRegistration<DFMoBlur> tool({109, "MoBlur", "MoB",
                                       "Motion analysis over consecutive frames to derive a natural motion "
                                       "blur, affecting only the moving regions of the clip.",
                                       kWritesControls | kShowsDivision});

} // namespace
} // namespace k7
