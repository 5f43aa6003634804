#include "filters/CrashZoom.h"
#include "frame/adapter/OverlayOperatorK7.h"
#include "frame/adapter/Registration.h"

namespace k7 {
namespace {

class DFCrashZoom : public OverlayOperatorK7 {
public:
    explicit DFCrashZoom(const OperatorArguments& arguments) : OverlayOperatorK7(arguments) {
        CrashZoom& core = MakeCore<CrashZoom>();
        Page("K7 CrashZoom");
        Add(core.Cntr, {"Centre", "Cntr"}, Offset{0.5, 0.5});
        Add(core.DimX, {"Clear Radius", "DimX"}, Slider{0.4, 0, 10});
        Add(core.Spee, {"Speed", "Spee"}, Slider{10, -200, 200});
        Add(core.Samp, {"Sample", "Samp"}, Combo{{"1 Sample", "4 Samples", "16 Samples", "64 Samples"}});
        IdleAt(core.Spee, 0);
        AddMainImage(core.Input, "Clip to Zoom");
        AddImageOutput(core.Output);

        AddWidget(core.CentreOverlay, kWhite, core.Cntr);
        AddWidget(core.ClearOverlay, {65535, 65535, 0}, core.Cntr, core.DimX, core.DimX);
    }
};

const ToolRegistration<DFCrashZoom> tool({102, "CrashZoom", "Crz", "Convergence blurring."});

} // namespace
} // namespace k7
