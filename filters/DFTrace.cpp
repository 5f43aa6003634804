#include "filters/Trace.h"
#include "frame/adapter/OperatorK7.h"
#include "frame/adapter/Registration.h"

namespace k7 {
namespace {

class DFTrace : public OperatorK7 {
public:
    explicit DFTrace(const OperatorArguments& arguments) : OperatorK7(arguments) {
        Trace& core = MakeCore<Trace>();
        Page("K7 Trace");
        Add(core.Leve, {"Trace Level", "Leve"}, Slider{50, 0, 100});
        Add(core.Over, {"Draw Over Image", "Over"}, Check{0});
        Add(core.TCol, {"Colour", "TCol"}, Combo{{"RGB", "Mono"}});
        AddMainImage(core.Input, "Clip to Trace");
        AddImageOutput(core.Output);
    }
};

const ToolRegistration<DFTrace> tool({111, "Trace", "Trc", " Traces the image intensity contours"});

} // namespace
} // namespace k7
