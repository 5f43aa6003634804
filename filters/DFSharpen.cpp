#include "filters/Sharpen.h"
#include "frame/adapter/OperatorK7.h"
#include "frame/adapter/Registration.h"

namespace k7 {
namespace {

class DFSharpen : public OperatorK7 {
public:
    explicit DFSharpen(const OperatorArguments& arguments) : OperatorK7(arguments) {
        Sharpen& core = MakeCore<Sharpen>();
        Page("K7 Sharpen");
        Add(core.RadS, {"Radius", "RadS"}, Slider{3, 2, 10});
        Add(core.Powe, {"Strength", "Powe"}, Slider{5, 0, 100});
        Add(core.Iter, {"Iterations", "Iter"}, Slider{1, 1, 10});
        InPixels(core.RadS);
        IdleAt(core.Powe, 0);
        AddMainImage(core.Input, "Clip to Sharpen");
        AddImageOutput(core.Output);
    }
};

const ToolRegistration<DFSharpen> tool({110, "Sharpen", "Shr",
                                        " Sharpenes the image using a high pass filter."});

} // namespace
} // namespace k7
