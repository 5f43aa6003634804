#include "tests/ofx/StrictHost.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace k7::test::ofx {

namespace {

StrictHost* now = nullptr;
thread_local const std::string* currentAction = nullptr;

} // namespace

ActionScope::ActionScope(std::string action)
    : action_(std::move(action))
    , outer_(std::exchange(currentAction, &action_)) {}
ActionScope::~ActionScope() {
    currentAction = outer_;
}
int& ActionScope::PicturesOut() {
    static thread_local int out = 0;
    return out;
}
const std::string* ActionScope::Current() {
    return currentAction;
}

Param::Param(What what, const std::string& type, std::string paramName)
    : kind(type.substr(std::strlen("OfxParamType")))
    , name(std::move(paramName))
    , properties(what, type) {}

ParamValue& Param::At(double time) {
    if (keys.empty()) return value;
    const auto after = keys.upper_bound(time);
    return after == keys.begin() ? after->second : std::prev(after)->second;
}

Param* Effect::FindParam(const std::string& name) const {
    for (const auto& param : params)
        if (param->name == name) return param.get();
    return nullptr;
}

Clip* Effect::FindClip(const std::string& name) const {
    for (const auto& clip : clips)
        if (clip->name == name) return clip.get();
    return nullptr;
}

StrictHost::StrictHost(Habits h) : habits(h), host_{&properties_, &FetchSuite} {
    now = this;
    Enter(&properties_, "properties");
    properties_.Put("OfxPropName", std::string("k7.tests.StrictHost"));
    properties_.Put("OfxParamHostPropMaxPages", habits.pages);
    properties_.Put("OfxImageEffectPropTemporalClipAccess", 1);
}

StrictHost::~StrictHost() {
    now = nullptr;
}

StrictHost& StrictHost::Now() {
    return *now;
}

void StrictHost::Enter(void* object, const char* kind) {
    const std::lock_guard lock(mutex);
    live_[object] = kind;
}

void StrictHost::Leave(void* object) {
    const std::lock_guard lock(mutex);
    live_.erase(object);
}

bool StrictHost::IsLive(void* handle, const char* kind) {
    {
        const std::lock_guard lock(mutex);
        const auto found = live_.find(handle);
        if (found != live_.end() && found->second == kind) return true;
    }
    Fault(std::string("a handle that is none of living ") + kind);
    return false;
}

void StrictHost::Fault(const std::string& text) {
    const std::lock_guard lock(mutex);
    const std::string where = currentAction ? " in " + *currentAction : "";
    if (faults_.size() < 20) faults_.push_back(text + where);
}

std::vector<std::string> StrictHost::TakeFaults() {
    const std::lock_guard lock(mutex);
    return std::exchange(faults_, {});
}

void StrictHost::FailOn(const std::string& function, int nth, int status) {
    const std::lock_guard lock(mutex);
    failing_ = function;
    failIn_ = nth;
    failStatus_ = status;
    failed_ = false;
}

std::map<std::string, int> StrictHost::Calls() {
    const std::lock_guard lock(mutex);
    return calls_;
}

int StrictHost::Entered(const std::string& function, const char* allowedActions, bool anyThread) {
    if (!anyThread && !currentAction)
        Fault(function + " outside of an action, or on a thread of the plug-in's");
    if (allowedActions && currentAction &&
        std::string(allowedActions).find(*currentAction + " ") == std::string::npos)
        Fault(function + " is not allowed");
    const std::lock_guard lock(mutex);
    ++calls_[function];
    if (function != failing_ || --failIn_ != 0) return -1;
    failed_ = true;
    return failStatus_;
}

} // namespace k7::test::ofx
