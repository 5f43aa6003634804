#include "ofx/Plan.h"

#include "host/Tags.h"

#include <algorithm>
#include <cctype>

namespace ofx {

using host::Input;

namespace {

using Kind = ParameterPlan::Kind;

std::string LettersAndDigits(const std::string& text) {
    std::string name;
    std::copy_if(text.begin(), text.end(), std::back_inserter(name),
                 [](unsigned char c) { return c < 128 && std::isalnum(c); });
    return name;
}

Kind KindOf(const Input& input) {
    const std::string control = input.GetAttrS(host::kTagControlKind);
    if (input.DataType() == Input::Type::Point) return Kind::Point;
    if (input.DataType() == Input::Type::Text) return Kind::File;
    if (control == "ComboControl") return Kind::Choice;
    if (control == "CheckboxControl") return Kind::Boolean;
    return input.GetAttrI(host::kTagInteger) ? Kind::Integer : Kind::Double;
}

/// The id if it can be a script name; the label's letters if there is no id.
std::string NameOf(const Input& input) {
    const std::string name = LettersAndDigits(input.Id());
    return name.empty() ? LettersAndDigits(input.Name()) : name;
}

bool StartsColour(const std::vector<Input*>& inputs, std::size_t at) {
    for (std::size_t c = 0; c < 3; ++c)
        if (at + c >= inputs.size() || !inputs[at + c]->HasAttr(host::kTagColourChannel) ||
            inputs[at + c]->GetAttrI(host::kTagColourChannel) != static_cast<int>(c))
            return false;
    return true;
}

} // namespace

ToolPlan::ToolPlan(const host::Operator& op)
    : framesBefore(static_cast<int>(op.GetAttrI(host::kTagFramesBefore)))
    , varies(op.GetAttrI(host::kTagVaries) != 0) {
    const std::vector<Input*> inputs = op.Inputs();
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        Input* input = inputs[i];
        if (input->DataType() == Input::Type::Image) {
            const bool main = input->GetAttrI(host::kTagMainLink) == 1;
            clips.push_back({main ? "Source" : LettersAndDigits(input->Id()), input, !main,
                             input->HasAttr(host::kTagCommon)});
            if (main) std::rotate(clips.begin(), clips.end() - 1, clips.end());
            continue;
        }
        if (input->Id() == "FloatPictures") {
            depthSwitch = input;
            continue;
        }
        const int page = static_cast<int>(input->GetAttrI(host::kTagPage, -1));
        ParameterPlan plan{KindOf(*input), NameOf(*input), input->Name(), {input}, page};
        if (StartsColour(inputs, i)) {
            plan.kind = Kind::Rgb;
            plan.name.pop_back(); // the letter of the channel
            plan.inputs = {inputs[i], inputs[i + 1], inputs[i + 2]};
            i += 2;
        }
        if (plan.label.empty()) plan.label = input->HasAttr(host::kTagColourLabel) ? "Colour" : plan.name;
        parameters.push_back(std::move(plan));
    }
    if (depthSwitch) parameters.push_back({Kind::Boolean, kWordsParameter, kWordsLabel, {}, -1});
}

} // namespace ofx
