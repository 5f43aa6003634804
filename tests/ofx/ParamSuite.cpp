// The strict host's parameter suite, its members in the order of the standard's binary interface.

#include "tests/ofx/SuiteCalls.h"

#include <algorithm>
#include <cstdarg>

namespace k7::test::ofx {

namespace {

Status paramDefine(Effect* set, const char* type, const char* name, PropertySet** properties) {
    ENTER(kWhereDefined);
    if (!Host().Live<Effect>(set, "effect")) return kBadHandle;
    if (set->FindParam(name)) return Host().Fault("a second parameter " + std::string(name)), kExists;
    static const std::set<std::string> types = {
        "OfxParamTypeInteger", "OfxParamTypeDouble", "OfxParamTypeDouble2D",
        "OfxParamTypeBoolean", "OfxParamTypeChoice", "OfxParamTypeRGB",
        "OfxParamTypeString",  "OfxParamTypeGroup",  "OfxParamTypePage"};
    if (!types.count(type)) return Host().Fault("no type of parameters: " + std::string(type)), kUnknown;
    set->params.push_back(std::make_unique<Param>(kParamDescriptor, type, name));
    PropertySet* made = &set->params.back()->properties;
    Host().Enter(made, "properties");
    if (properties) *properties = made;
    return kOk;
}
Status paramGetHandle(Effect* set, const char* name, Param** param, PropertySet** properties) {
    ENTER();
    if (!Host().Live<Effect>(set, "effect")) return kBadHandle;
    Param* found = set->FindParam(name);
    if (!found || set->what != kEffect) return Host().Fault("no parameter " + std::string(name)), kUnknown;
    *param = found;
    if (properties) *properties = &found->properties;
    return kOk;
}
Status paramGetPropertySet(Param* param, PropertySet** properties) {
    ENTER();
    if (!Host().Live<Param>(param, "parameter")) return kBadHandle;
    *properties = &param->properties;
    return kOk;
}

/// Numbers of a parameter without all of its ranges, in a host that clamps them to -1 to 1.
double Held(const Param& param, double value) {
    const auto has = [&](const char* range) { return param.properties.Count(range) > 0; };
    const bool all = has("OfxParamPropMin") && has("OfxParamPropMax") && has("OfxParamPropDisplayMin") &&
                     has("OfxParamPropDisplayMax");
    return all || !Host().habits.clampsUnranged ? value : std::clamp(value, -1.0, 1.0);
}

Status Hand(const Param& param, const ParamValue& value, va_list to) {
    const int reals = param.kind == "Double" ? 1 : param.kind == "Double2D" ? 2 : param.kind == "RGB" ? 3 : 0;
    for (int i = 0; i < reals; ++i)
        *va_arg(to, double*) = Held(param, value.real[static_cast<std::size_t>(i)]);
    if (reals > 0) return kOk;
    if (param.kind == "String")
        *va_arg(to, char**) = const_cast<char*>(value.text.c_str());
    else
        *va_arg(to, int*) = value.whole;
    return kOk;
}

ParamValue Taken(const Param& param, va_list from) {
    ParamValue value;
    const int reals = param.kind == "Double" ? 1 : param.kind == "Double2D" ? 2 : param.kind == "RGB" ? 3 : 0;
    for (int i = 0; i < reals; ++i) value.real[static_cast<std::size_t>(i)] = va_arg(from, double);
    if (param.kind == "String")
        value.text = va_arg(from, const char*);
    else if (reals == 0)
        value.whole = va_arg(from, int);
    return value;
}

Status paramGetValue(Param* param, ...) {
    ENTER();
    if (!Host().Live<Param>(param, "parameter")) return kBadHandle;
    const std::lock_guard lock(Host().mutex);
    va_list to;
    va_start(to, param);
    const Status status = Hand(*param, param->value, to);
    va_end(to);
    return status;
}
Status paramGetValueAtTime(Param* param, double time, ...) {
    ENTER();
    if (!Host().Live<Param>(param, "parameter")) return kBadHandle;
    const std::lock_guard lock(Host().mutex);
    va_list to;
    va_start(to, time);
    const Status status = Hand(*param, param->At(time), to);
    va_end(to);
    return status;
}
Status paramSetValue(Param* param, ...) {
    ENTER(kWhereWritten);
    if (!Host().Live<Param>(param, "parameter")) return kBadHandle;
    const std::lock_guard lock(Host().mutex);
    va_list from;
    va_start(from, param);
    param->value = Taken(*param, from);
    va_end(from);
    ++param->writes;
    return kOk;
}
Status paramSetValueAtTime(Param* param, double time, ...) {
    ENTER(kWhereWritten);
    if (!Host().Live<Param>(param, "parameter")) return kBadHandle;
    const std::lock_guard lock(Host().mutex);
    va_list from;
    va_start(from, time);
    param->keys[time] = Taken(*param, from);
    va_end(from);
    ++param->writes;
    return kOk;
}
Status paramGetNumKeys(Param* param, unsigned* count) {
    ENTER();
    if (!Host().Live<Param>(param, "parameter")) return kBadHandle;
    *count = static_cast<unsigned>(param->keys.size());
    return kOk;
}
Status paramEditBegin(Effect* set, const char* name) {
    ENTER(kWhereWritten);
    if (!Host().Live<Effect>(set, "effect")) return kBadHandle;
    if (set->editDepth++ == 0) set->undoSteps.emplace_back(name);
    return kOk;
}
Status paramEditEnd(Effect* set) {
    ENTER();
    if (!Host().Live<Effect>(set, "effect")) return kBadHandle;
    if (--set->editDepth < 0) Host().Fault("an end of an edit that was not begun");
    return kOk;
}

} // namespace

const void* ParameterSuite() {
    const void* const none = F(notExpected);
    static const void* const suite[] = {F(paramDefine),
                                        F(paramGetHandle),
                                        none,
                                        F(paramGetPropertySet),
                                        F(paramGetValue),
                                        F(paramGetValueAtTime),
                                        none,
                                        none,
                                        F(paramSetValue),
                                        F(paramSetValueAtTime),
                                        F(paramGetNumKeys),
                                        none,
                                        none,
                                        none,
                                        none,
                                        none,
                                        F(paramEditBegin),
                                        F(paramEditEnd)};
    return suite;
}

} // namespace k7::test::ofx
