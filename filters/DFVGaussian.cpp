#include "filters/VGaussian.h"
#include "frame/adapter/OperatorK7.h"
#include "frame/adapter/Registration.h"

namespace k7 {
namespace {

class DFVGaussian : public OperatorK7 {
public:
    explicit DFVGaussian(const OperatorArguments& arguments) : OperatorK7(arguments) {
        VGaussian& core = MakeCore<VGaussian>();
        Page("K7 VGaussian");
        Add(core.BRGB, {"Blur RGB", "BRGB", kChange | kUnmirrored}, Check{1});
        Add(core.BluA, {"Blur Alpha", "BluA", kChange | kUnmirrored}, Check{0});
        Add(core.Sync, {"Sync Alpha to RGB", "Sync", kChange | kUnmirrored | kHidden}, Check{0});
        Add(core.RadX, {"RGB X", "RadX"}, Slider{4, 0, 200});
        Add(core.RadY, {"RGB Y", "RadY"}, Slider{60, 0, 200});
        Add(core.RdAX, {"Alpha X", "RdAX", kHidden}, Slider{5, 0, 200});
        Add(core.RDAY, {"Alpha Y", "RDAY", kHidden}, Slider{5, 0, 200});
        IdleAt(core.BRGB, 0);
        IdleAt(core.BluA, 0);
        AddMainImage(core.Input, "Clip to Blur");
        AddImageOutput(core.Output);

        for (ControlK7* choice : {&core.BRGB, &core.BluA, &core.Sync})
            OnChange(*choice, [&core](double) { core.RefreshControls(); });
    }
};

const ToolRegistration<DFVGaussian> tool({112, "VGaussian", "VGa",
                                          " Defocuses the image variably in X and Y"});

} // namespace
} // namespace k7
