#include "ofx/Describe.h"

#include "ofx/Hints.h"
#include "ofx/Names.h"
#include "ofx/Overlay.h"
#include "ofx/Plan.h"
#include "ofx/Suites.h"

#include <algorithm>

namespace ofx {

using host::Input;
using Kind = ParameterPlan::Kind;

std::string PlainName(const host::Registry& tool) {
    const std::string id = tool.Id().Text();
    return id.substr(id.find('.') + 1);
}

namespace {

/// Stands for "no limit": hosts handle the very largest numbers badly.
constexpr double kNoLimit = 1e9;

host::Ref<host::Operator> NewTool(const host::Registry& tool) {
    host::Ref<host::Operator> op(tool.NewOperator(nullptr));
    if (!op) throw Failure(kErrMemory, "out of memory");
    return op;
}

void SetDepths(const Properties& effect) {
    int i = 0;
    for (const char* depth : {kDepthByte, kDepthShort, kDepthFloat})
        effect.Set(kSupportedPixelDepths, depth, i++);
    effect.Try(kSupportedPixelDepths, kDepthHalf, i); // not known to the oldest hosts of the standard
}

Properties DefineClip(Effect effect, const char* name, bool temporal) {
    PropertySet set = nullptr;
    Check(TheHost().effect->clipDefine(effect, name, &set), name);
    const Properties clip(set);
    clip.Set(kSupportedComponents, kComponentsRgba, 0);
    clip.Set(kSupportedComponents, kComponentsRgb, 1);
    clip.Set(kTemporalClipAccess, temporal ? 1 : 0);
    clip.Set(kSupportsTiles, 0);
    return clip;
}

const char* TypeOf(Kind kind) {
    switch (kind) {
    case Kind::Integer:
        return kParamInteger;
    case Kind::Double:
        return kParamDouble;
    case Kind::Point:
        return kParamDouble2D;
    case Kind::Boolean:
        return kParamBoolean;
    case Kind::Choice:
        return kParamChoice;
    case Kind::Rgb:
        return kParamRgb;
    case Kind::File:
        break;
    }
    return kParamString;
}

struct Range {
    double low, high;
};
Range FullRange(const Input& input) {
    return {input.HasAttr(host::kTagLowest) ? input.GetAttrD(host::kTagLowest) : -kNoLimit,
            input.HasAttr(host::kTagHighest) ? input.GetAttrD(host::kTagHighest) : kNoLimit};
}
/// The slider's range; without one, from 0 to twice the default.
Range ShownRange(const Input& input) {
    if (input.HasAttr(host::kTagShownLow) && input.HasAttr(host::kTagShownHigh))
        return {input.GetAttrD(host::kTagShownLow), input.GetAttrD(host::kTagShownHigh)};
    const Range full = FullRange(input);
    const double standard = input.GetAttrD(host::kTagDefault);
    const double low = std::max(full.low, std::min(0.0, 2.0 * standard));
    return {low, std::max(low, std::min(full.high, std::max(1.0, 2.0 * standard)))};
}

template <class Number>
void SetNumber(const Properties& to, const Input& input) {
    const Range full = FullRange(input);
    const Range shown = ShownRange(input);
    to.Set(kParamDefault, static_cast<Number>(input.GetAttrD(host::kTagDefault)));
    to.Set(kParamMin, static_cast<Number>(full.low));
    to.Set(kParamMax, static_cast<Number>(full.high));
    to.Set(kParamShownMin, static_cast<Number>(shown.low));
    to.Set(kParamShownMax, static_cast<Number>(shown.high));
}

void SetPoint(const Properties& to, const Input& input) {
    const host::Tag defaults[] = {host::kTagDefaultX, host::kTagDefaultY};
    for (int axis = 0; axis < 2; ++axis) {
        to.Set(kParamDefault, input.GetAttrD(defaults[axis]), axis);
        to.Set(kParamMin, -kNoLimit, axis);
        to.Set(kParamMax, kNoLimit, axis);
        to.Set(kParamShownMin, 0.0, axis);
        to.Set(kParamShownMax, 1.0, axis);
    }
    to.Set(kParamDoubleType, kParamPlain);
    to.Try(kParamHostHandle, 0);
}

void SetColour(const Properties& to, const std::vector<Input*>& channels) {
    for (int c = 0; c < 3; ++c)
        to.Set(kParamDefault, channels[static_cast<std::size_t>(c)]->GetAttrD(host::kTagDefault), c);
}

void SetChoice(const Properties& to, const Input& input) {
    const std::vector<std::string> entries = input.GetAttrList(host::kTagEntry);
    for (std::size_t i = 0; i < entries.size(); ++i)
        to.Set(kParamChoiceOption, entries[i], static_cast<int>(i));
    to.Set(kParamDefault, static_cast<int>(input.GetAttrD(host::kTagDefault)));
}

void SetFile(const Properties& to, const Input& input) {
    to.Set(kParamStringMode, kParamFilePath);
    to.Try(kParamFileExists, 1);
    to.Set(kParamDefault, input.GetAttrS(host::kTagDefaultText));
}

void SetKind(const Properties& to, const ParameterPlan& plan) {
    if (plan.inputs.empty()) {
        to.Set(kParamDefault, 0);
        return;
    }
    const Input& input = *plan.inputs.front();
    switch (plan.kind) {
    case Kind::Integer:
        return SetNumber<int>(to, input);
    case Kind::Double:
        to.Set(kParamDoubleType, kParamPlain);
        return SetNumber<double>(to, input);
    case Kind::Point:
        return SetPoint(to, input);
    case Kind::Boolean:
        return to.Set(kParamDefault, input.GetAttrD(host::kTagDefault) != 0.0 ? 1 : 0);
    case Kind::Choice:
        return SetChoice(to, input);
    case Kind::Rgb:
        return SetColour(to, plan.inputs);
    case Kind::File:
        return SetFile(to, input);
    }
}

PropertySet DefineParameter(ParamSet set, const char* type, const std::string& name,
                            const std::string& label) {
    PropertySet properties = nullptr;
    Check(TheHost().param->paramDefine(set, type, name.c_str(), &properties), name.c_str());
    Properties(properties).Set(kPropLabel, label);
    return properties;
}

std::string GroupName(int page) {
    return "Group" + std::to_string(page + 1);
}

void DefineGroups(ParamSet set, const host::Operator& op) {
    int page = 0;
    for (const std::string& label : op.Pages()) DefineParameter(set, kParamGroup, GroupName(page++), label);
}

std::string HintOf(const std::string& effect, const std::string& label) {
    const auto* end = kHints + kHintCount;
    const auto* hint =
        std::find_if(kHints, end, [&](const Hint& h) { return effect == h.effect && label == h.label; });
    if (label == kWordsLabel)
        return "Works on 15-bit words at every depth, as on pictures of bytes and shorts.";
    return hint == end ? "" : hint->text;
}

void DefineParameters(ParamSet set, const ToolPlan& plan, const std::string& effect) {
    for (const ParameterPlan& parameter : plan.parameters) {
        const Properties to(DefineParameter(set, TypeOf(parameter.kind), parameter.name, parameter.label));
        to.Try(kParamScriptName, parameter.name);
        SetKind(to, parameter);
        if (const std::string hint = HintOf(effect, parameter.label); !hint.empty()) to.Try(kParamHint, hint);
        if (parameter.page >= 0) to.Set(kParamParent, GroupName(parameter.page));
        if (parameter.inputs.empty()) continue;
        const Input& input = *parameter.inputs.front();
        if (!input.GetAttrI(host::kTagShown, 1)) to.Set(kParamSecret, 1);
        if (input.GetAttrI(host::kTagDisabled)) to.Set(kParamEnabled, 0);
    }
}

/// Hosts that have pages show them besides the groups.
void DefinePages(ParamSet set, const host::Operator& op, const ToolPlan& plan) {
    if (Properties(TheHost().hostProperties).Get(kHostMaxPages, 0) < static_cast<int>(op.Pages().size()))
        return;
    int page = 0;
    for (const std::string& label : op.Pages()) {
        const Properties to(DefineParameter(set, kParamPage, "Page" + std::to_string(page + 1), label));
        int child = 0;
        for (const ParameterPlan& parameter : plan.parameters)
            if (parameter.page == page) to.Set(kParamPageChild, parameter.name, child++);
        ++page;
    }
}

} // namespace

void Describe(const host::Registry& tool, Effect effect) {
    const host::Ref<host::Operator> op = NewTool(tool);
    const ToolPlan plan(*op);
    const Properties to(PropertiesOf(effect));
    to.Set(kPropLabel, "K7 " + PlainName(tool));
    to.Set(kGrouping, "K7");
    to.Try(kPropPluginDescription, tool.GetAttrS(host::kTagRegDescription));
    to.Set(kSupportedContexts, kContextFilter, 0);
    to.Set(kSupportedContexts, kContextGeneral, 1);
    SetDepths(to);
    to.Set(kSupportsTiles, 0);
    to.Set(kSupportsMultiResolution, 1);
    to.Set(kTemporalClipAccess, plan.framesBefore > 0 ? 1 : 0);
    to.Set(kRenderThreadSafety, kInstanceSafe);
    if (TheHost().interact && HasWidgets(*op))
        to.Try(kOverlayInteract, reinterpret_cast<void*>(&OverlayEntry));
}

void DescribeInContext(const host::Registry& tool, Effect effect) {
    const host::Ref<host::Operator> op = NewTool(tool);
    const ToolPlan plan(*op);
    for (const ClipPlan& clip : plan.clips) {
        const Properties to = DefineClip(effect, clip.name.c_str(), plan.framesBefore > 0);
        if (clip.optional) to.Set(kClipOptional, 1);
        if (clip.mask) to.Set(kClipIsMask, 1);
    }
    DefineClip(effect, kOutput, false);
    ParamSet set = ParametersOf(effect);
    DefineGroups(set, *op);
    DefineParameters(set, plan, PlainName(tool));
    DefinePages(set, *op, plan);
}

} // namespace ofx
