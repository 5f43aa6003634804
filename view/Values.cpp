#include "view/Values.h"

#include "host/Document.h"
#include "host/Tags.h"

namespace view {

using host::Input;
using Type = Input::Type;

namespace {

InputState StateOf(const Input& input) {
    InputState state;
    if (input.DataType() == Type::Text)
        state.text = input.GetText();
    else if (input.DataType() != Type::Image)
        state.curve = input.GetCurve();
    state.shown = input.GetAttrI(host::kTagShown, 1) != 0;
    state.enabled = input.GetAttrI(host::kTagDisabled) == 0;
    return state;
}

void SetValue(Input& input, const InputState& state) {
    if (input.DataType() == Type::Text)
        input.SetSource(host::AutoParameter(new host::Text(state.text)).get(), host::kTimeNow, 1, nullptr);
    else
        input.SetCurve(state.curve);
}

} // namespace

Values ValuesOf(const host::Operator& op) {
    Values values;
    for (const Input* input : op.Inputs()) values.push_back(StateOf(*input));
    return values;
}

void Restore(host::Operator& op, const Values& values) {
    op.Document->Silent = true;
    std::size_t i = 0;
    for (Input* input : op.Inputs()) {
        const InputState& state = values[i++];
        const InputState now = StateOf(*input);
        if (input->DataType() != Type::Image && !state.SameValue(now)) SetValue(*input, state);
        if (state.shown != now.shown) input->SetAttrs({{host::kTagShown, int{state.shown}}});
        if (state.enabled != now.enabled) input->SetAttrs({{host::kTagDisabled, int{!state.enabled}}});
    }
    op.Document->Silent = false;
}

Values Scaled(const host::Operator& op, Values values, int divisor) {
    std::size_t i = 0;
    for (const Input* input : op.Inputs()) {
        host::Curve& curve = values[i++].curve;
        if (divisor == 1 || !input->GetAttrI(host::kTagPixels)) continue;
        curve.Constant.x /= divisor;
        for (auto& [time, value] : curve.Keys) value.x /= divisor;
    }
    return values;
}

host::Curve::Value DefaultOf(const Input& input) {
    if (input.DataType() == Type::Point)
        return {input.GetAttrD(host::kTagDefaultX), input.GetAttrD(host::kTagDefaultY)};
    return {input.GetAttrD(host::kTagDefault), 0.0};
}

bool IsDefault(const Input& input) {
    const host::Curve curve = input.GetCurve();
    return !curve.Animated() && curve.Constant == DefaultOf(input);
}

} // namespace view
