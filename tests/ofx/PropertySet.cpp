#include "tests/ofx/PropertySet.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <sstream>

namespace k7::test::ofx {

namespace {

// Types in the order of Value's alternatives.
enum Type : std::size_t { I, D, S, P, V /* that of the parameter's value */ };

constexpr int kMany = 0;
constexpr int kValues = -1; ///< as many as the parameter's value has

constexpr unsigned kAnyParam = kParamDescriptor | kParam;
constexpr unsigned kAnyClip = kClipDescriptor | kClip;
constexpr unsigned kAnyEffect = kEffectDescriptor | kEffect;

struct Row {
    const char* name;
    Type type;
    int dimension;
    unsigned readIn, writtenIn;
    const char* params =
        nullptr; ///< the kinds of parameter that have it, as the ends of their types; null: all
};

// The standard's tables, as far as an effect of this kind has to do with them.
constexpr Row kRows[] = {
    {"OfxPropType", S, 1, ~0u, 0},
    {"OfxPropName", S, 1, kHost | kAnyClip | kAnyParam, 0},
    {"OfxPropLabel", S, 1, ~0u, kEffectDescriptor | kClipDescriptor | kAnyParam},
    {"OfxPropShortLabel", S, 1, ~0u, kEffectDescriptor | kClipDescriptor | kAnyParam},
    {"OfxPropLongLabel", S, 1, ~0u, kEffectDescriptor | kClipDescriptor | kAnyParam},
    {"OfxPropPluginDescription", S, 1, kEffectDescriptor, kEffectDescriptor},
    {"OfxPropAPIVersion", I, kMany, kHost, 0},
    {"OfxPropVersion", I, kMany, kHost | kEffectDescriptor, 0},
    {"OfxPropInstanceData", P, 1, kEffect | kInteract, kEffect | kInteract},
    {"OfxPropEffectInstance", P, 1, kInteract, 0},
    {"OfxImageEffectPropSupportedContexts", S, kMany, kHost | kEffectDescriptor, kEffectDescriptor},
    {"OfxImageEffectPropSupportedPixelDepths", S, kMany, kHost | kEffectDescriptor, kEffectDescriptor},
    {"OfxImageEffectPluginPropGrouping", S, 1, kEffectDescriptor, kEffectDescriptor},
    {"OfxImageEffectPluginPropSingleInstance", I, 1, kEffectDescriptor, kEffectDescriptor},
    {"OfxImageEffectPluginRenderThreadSafety", S, 1, kEffectDescriptor, kEffectDescriptor},
    {"OfxImageEffectPluginPropHostFrameThreading", I, 1, kEffectDescriptor, kEffectDescriptor},
    {"OfxImageEffectPluginPropOverlayInteractV1", P, 1, kEffectDescriptor, kEffectDescriptor},
    {"OfxImageEffectPropSupportsMultiResolution", I, 1, kHost | kEffectDescriptor, kEffectDescriptor},
    {"OfxImageEffectPropSupportsTiles", I, 1, kHost | kAnyEffect | kAnyClip, kAnyEffect | kClipDescriptor},
    {"OfxImageEffectPropTemporalClipAccess", I, 1, kHost | kEffectDescriptor | kAnyClip,
     kEffectDescriptor | kClipDescriptor},
    {"OfxImageEffectPropMultipleClipDepths", I, 1, kHost | kEffectDescriptor, kEffectDescriptor},
    {"OfxImageEffectPropSupportsMultipleClipPARs", I, 1, kHost | kEffectDescriptor, kEffectDescriptor},
    {"OfxImageEffectPropContext", S, 1, kEffect, 0},
    {"OfxImageEffectPropProjectSize", D, 2, kEffect, 0},
    {"OfxImageEffectPropProjectOffset", D, 2, kEffect, 0},
    {"OfxImageEffectPropProjectExtent", D, 2, kEffect, 0},
    {"OfxImageEffectPropPixelAspectRatio", D, 1, kEffect, 0},
    {"OfxImageEffectPropSupportedComponents", S, kMany, kHost | kAnyClip, kClipDescriptor},
    {"OfxImageClipPropOptional", I, 1, kAnyClip, kClipDescriptor},
    {"OfxImageClipPropIsMask", I, 1, kAnyClip, kClipDescriptor},
    {"OfxImageClipPropFieldExtraction", S, 1, kAnyClip, kClipDescriptor},
    {"OfxImageClipPropConnected", I, 1, kClip, 0},
    {"OfxImageEffectPropFrameRange", D, 2, kClip, 0},
    {"OfxImageEffectPropFrameRate", D, 1, kClip | kEffect, 0},
    {"OfxImageEffectPropPixelDepth", S, 1, kClip | kImage, 0},
    {"OfxImageEffectPropComponents", S, 1, kClip | kImage, 0},
    {"OfxImageEffectPropPreMultiplication", S, 1, kClip | kImage, 0},
    {"OfxImagePropPixelAspectRatio", D, 1, kClip | kImage, 0},
    {"OfxImageEffectPropRenderScale", D, 2, kImage, 0},
    {"OfxImagePropData", P, 1, kImage, 0},
    {"OfxImagePropBounds", I, 4, kImage, 0},
    {"OfxImagePropRegionOfDefinition", I, 4, kImage, 0},
    {"OfxImagePropRowBytes", I, 1, kImage, 0},
    {"OfxImagePropField", S, 1, kImage, 0},
    {"OfxImagePropUniqueIdentifier", S, 1, kImage, 0},
    {"OfxParamPropType", S, 1, kAnyParam, 0},
    {"OfxParamPropSecret", I, 1, kAnyParam, kAnyParam},
    {"OfxParamPropEnabled", I, 1, kAnyParam, kAnyParam},
    {"OfxParamPropHint", S, 1, kAnyParam, kAnyParam},
    {"OfxParamPropScriptName", S, 1, kAnyParam, kParamDescriptor},
    {"OfxParamPropParent", S, 1, kAnyParam, kParamDescriptor},
    {"OfxParamPropDefault", V, kValues, kAnyParam, kParamDescriptor,
     "Integer Double Double2D RGB Boolean Choice String"},
    {"OfxParamPropAnimates", I, 1, kAnyParam, kParamDescriptor,
     "Integer Double Double2D RGB Boolean Choice String"},
    {"OfxParamPropMin", V, kValues, kAnyParam, kAnyParam, "Integer Double Double2D RGB"},
    {"OfxParamPropMax", V, kValues, kAnyParam, kAnyParam, "Integer Double Double2D RGB"},
    {"OfxParamPropDisplayMin", V, kValues, kAnyParam, kAnyParam, "Integer Double Double2D RGB"},
    {"OfxParamPropDisplayMax", V, kValues, kAnyParam, kAnyParam, "Integer Double Double2D RGB"},
    {"OfxParamPropDoubleType", S, 1, kAnyParam, kParamDescriptor, "Double Double2D"},
    {"OfxParamPropIncrement", D, 1, kAnyParam, kAnyParam, "Double Double2D"},
    {"OfxParamPropDigits", I, 1, kAnyParam, kAnyParam, "Double Double2D"},
    {"kOfxParamPropUseHostOverlayHandle", I, 1, kAnyParam, kParamDescriptor, "Double2D"},
    {"OfxParamPropChoiceOption", S, kMany, kAnyParam, kAnyParam, "Choice"},
    {"OfxParamPropStringMode", S, 1, kAnyParam, kParamDescriptor, "String"},
    {"OfxParamPropStringFilePathExists", I, 1, kAnyParam, kParamDescriptor, "String"},
    {"OfxParamPropGroupOpen", I, 1, kAnyParam, kParamDescriptor, "Group"},
    {"OfxParamPropPageChild", S, kMany, kAnyParam, kParamDescriptor, "Page"},
    {"OfxParamHostPropMaxPages", I, 1, kHost, 0},
    {"OfxParamHostPropMaxParameters", I, 1, kHost, 0},
};

std::string KindOf(const std::string& paramType) {
    return paramType.substr(std::min(paramType.size(), std::strlen("OfxParamType")));
}

bool Lists(const char* kinds, const std::string& kind) {
    std::istringstream words(kinds);
    return std::find(std::istream_iterator<std::string>(words), {}, kind) !=
           std::istream_iterator<std::string>();
}

} // namespace

void PropertySet::Put(const std::string& name, Value value, std::size_t index) {
    auto& list = values[name];
    if (list.size() <= index) list.resize(index + 1, value);
    list[index] = std::move(value);
}

std::size_t PropertySet::Count(const std::string& name) const {
    const auto found = values.find(name);
    return found == values.end() ? 0 : found->second.size();
}

/// What the standard objects to in an access; empty if nothing.
std::string PropertySet::Misuse(const std::string& name, int index, std::size_t type, bool writes) const {
    if (what_ == kArguments || what_ == kAnswers) {
        const auto found = values.find(name);
        if (found == values.end()) return "is not of this action";
        if (writes && what_ == kArguments) return "is an argument and cannot be set";
        if (found->second.front().index() != type) return "has another type";
        return index < static_cast<int>(found->second.size()) ? "" : "has no such index";
    }
    const auto* row =
        std::find_if(std::begin(kRows), std::end(kRows), [&](const Row& r) { return name == r.name; });
    if (row == std::end(kRows)) return "is not in the standard";
    const std::string kind = KindOf(paramType_);
    if (!((writes ? row->writtenIn : row->readIn) & what_)) return "does not belong to this object";
    if (row->params && !Lists(row->params, kind)) return "does not belong to a parameter of type " + kind;
    const std::size_t own = Lists("Integer Boolean Choice", kind) ? I : kind == "String" ? S : D;
    if (type != (row->type == V ? own : static_cast<std::size_t>(row->type))) return "has another type";
    const int own2 = kind == "Double2D" ? 2 : kind == "RGB" ? 3 : 1;
    const int dimension = row->dimension == kValues ? own2 : row->dimension;
    if (index < 0 || (dimension != kMany && index >= dimension)) return "has no such index";
    const bool gap = writes && dimension == kMany && index > static_cast<int>(Count(name));
    return gap ? "is set with a gap" : "";
}

int PropertySet::Set(const std::string& name, int index, const Value& value, std::string* fault) {
    *fault = Misuse(name, index, value.index(), true);
    if (!fault->empty()) return *fault == "has no such index" ? 10 : 3;
    Put(name, value, static_cast<std::size_t>(index));
    return 0;
}

int PropertySet::Get(const std::string& name, int index, std::size_t type, Value* value,
                     std::string* fault) const {
    *fault = Misuse(name, index, type, false);
    if (!fault->empty()) return *fault == "has no such index" ? 10 : 3;
    const auto found = values.find(name);
    if (found == values.end()) return 3; // this host does not have it, which is allowed
    if (index >= static_cast<int>(found->second.size())) return 10;
    *value = found->second[static_cast<std::size_t>(index)];
    return 0;
}

} // namespace k7::test::ofx
