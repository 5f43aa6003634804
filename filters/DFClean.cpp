#include "filters/Clean.h"
#include "frame/adapter/OperatorK7.h"
#include "frame/adapter/Registration.h"

namespace k7 {
namespace {

class DFClean : public OperatorK7 {
public:
    explicit DFClean(const OperatorArguments& arguments) : OperatorK7(arguments) {
        Clean& core = MakeCore<Clean>();
        Page("K7 Clean");
        Add(core.XRad, {"Horizontal Radius", "XRad"}, Slider{2, 1, 120});
        Add(core.YRad, {"Vertical Radius", "YRad"}, Slider{2, 1, 120});
        AddMainImage(core.Input, "Clip to Clean");
        AddImageOutput(core.Output);
    }
};

const ToolRegistration<DFClean> tool({101, "Clean", "Cln", " Cleans up the image using median filtering."});

} // namespace
} // namespace k7
