#include "host/Idle.h"

#include "host/Tags.h"

namespace host {
namespace {

/// Whether the input holds the value that one of its attributes names.
bool Holds(Input& input, double time, Tag attribute) {
    const Ref<Parameter> value(input.GetSource(time));
    const auto* number = dynamic_cast<const Number*>(value.get());
    return number && number->Value == input.GetAttrD(attribute);
}

} // namespace

bool IsIdle(const Operator& op, double time) {
    int own = 0, idle = 0;
    for (Input* input : op.Inputs()) {
        if (!input->HasAttr(kTagIdleAt)) continue;
        const bool isIdle = Holds(*input, time, kTagIdleAt);
        if (!input->HasAttr(kTagCommon))
            ++own, idle += isIdle;
        else if (isIdle && !op.Class()->HasAttr(kTagRegWritesControls))
            return true;
    }
    return own > 0 && own == idle;
}

Input* AidShown(const Operator& op, double time) {
    for (Input* input : op.Inputs())
        if (input->HasAttr(kTagAidAt) && Holds(*input, time, kTagAidAt)) return input;
    return nullptr;
}

} // namespace host
