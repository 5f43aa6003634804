#include "filters/Dither.h"
#include "frame/adapter/OperatorK7.h"
#include "frame/adapter/Registration.h"

namespace k7 {
namespace {

class DFDither : public OperatorK7 {
public:
    explicit DFDither(const OperatorArguments& arguments) : OperatorK7(arguments) {
        Dither& core = MakeCore<Dither>();
        SetAttrs({{host::kTagVaries, 1}});
        Page("K7 Dither");
        Add(core.Radius, {"Dither Radius", ""}, Slider{0.15, 0, 10});
        Add(core.DpEd, {"Duplicate Edges", "DpEd"}, Check{0});
        Add(core.DiRe, {"Direction", "DiRe"}, Combo{{"Both", "Horizontal", "Vertical"}});
        IdleAt(core.Radius, 0);
        AddMainImage(core.Input, "Input");
        AddImageOutput(core.Output);
    }
};

const ToolRegistration<DFDither> tool({105, "Dither", "Dth", "Breaks up images by pixel dithering.",
                                       kShowsDivision});

} // namespace
} // namespace k7
