#include "filters/Defocus.h"
#include "frame/adapter/OperatorK7.h"
#include "frame/adapter/Registration.h"

namespace k7 {
namespace {

class DFDefocus : public OperatorK7 {
public:
    explicit DFDefocus(const OperatorArguments& arguments) : OperatorK7(arguments) {
        Defocus& core = MakeCore<Defocus>();
        Page("K7 Defocus");
        Add(core.RadB, {"Radius", "RadB"}, Slider{3, 0, 200});
        Add(core.Dire, {"Direction", "Dire"}, Combo{{"Uni", "Horizontal", "Vertical"}});
        Add(core.Mode, {"Mode", "Mode", kChange | kUnmirrored}, Combo{{"Constant", "Exact"}});
        Add(core.DpEd, {"Dup Edges", "DpEd", kHidden}, Check{0});
        AddMainImage(core.Input, "Clip to Defocus");
        AddImageOutput(core.Output);

        OnChange(core.Mode, [&core](double time) { core.ShowDupEdges(time); });
    }
};

const ToolRegistration<DFDefocus> tool({104, "Defocus", "Def", " Defocus the input image."});

} // namespace
} // namespace k7
