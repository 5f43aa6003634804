#include "filters/DBlur.h"
#include "frame/adapter/OverlayOperatorK7.h"
#include "frame/adapter/Registration.h"

namespace k7 {
namespace {

class DFDBlur : public OverlayOperatorK7 {
public:
    explicit DFDBlur(const OperatorArguments& arguments) : OverlayOperatorK7(arguments) {
        DBlur& core = MakeCore<DBlur>();
        Page("K7 DBlur");
        Add(core.Leng, {"Size", "Leng"}, Slider{10, 0, 200});
        Add(core.Angl, {"Angle", "Angl"}, Screw{.standard = 0, .lowest = 0, .highest = 360});
        Add(core.Cent, {"Centre", "Cent"}, Check{1});
        IdleAt(core.Leng, 0);
        AddMainImage(core.Input, "Clip to Blur");
        AddImageOutput(core.Output);

        AddWidget(core.AngleOverlay, {65535, 0, 0}, core.Angl);
    }
};

const ToolRegistration<DFDBlur> tool({103, "DBlur", "Dbl", " Directional blurring."});

} // namespace
} // namespace k7
