#include "ofx/Instance.h"

#include "host/Application.h"
#include "host/Tags.h"
#include "ofx/Names.h"

#include <algorithm>
#include <map>
#include <utility>

namespace ofx {

using host::Input;

// Undo.

void HostDocument::StartUndo(const std::string& title, Input*) {
    if (depth_++ == 0 && WriteQueue::IsAllowed())
        open_ = TheHost().param->paramEditBegin(parameters_, title.c_str()) == kOk;
}
void HostDocument::EndUndo(bool) {
    if (depth_ == 0 || --depth_ > 0) return;
    if (std::exchange(open_, false)) static_cast<void>(TheHost().param->paramEditEnd(parameters_));
}
void HostDocument::CloseStep() {
    depth_ = std::min(depth_, 1);
    EndUndo(true);
}

// Messages, from any thread.

namespace {

std::mutex messagesMutex;
std::map<const host::Operator*, std::string>& Messages() {
    static std::map<const host::Operator*, std::string> messages;
    return messages;
}

std::string TakeMessage(const host::Operator& op) {
    const std::lock_guard lock(messagesMutex);
    const auto found = Messages().find(&op);
    if (found == Messages().end()) return {};
    std::string text = std::move(found->second);
    Messages().erase(found);
    return text;
}

} // namespace

void HearMessages() {
    host::GetApp()->SetMessageListener([](const host::Operator& op, const std::string& text) {
        const std::lock_guard lock(messagesMutex);
        Messages()[&op] = text; // only the latest is kept
    });
}

void Instance::Settle() {
    const std::string text = TakeMessage(*operator_);
    if (!text.empty()) {
        told_ = true;
        ShowMessage(effect_, "OfxMessageWarning", text);
    }
    exchange_.refusals.Raise();
}

// Setting up.

namespace {

// By their handles, so that an instance can be destroyed even if the host's properties fail.
std::mutex instancesMutex;
std::map<Effect, Instance*>& Instances() {
    static std::map<Effect, Instance*> instances;
    return instances;
}

host::Ref<host::Operator> NewTool(const host::Registry& tool, host::FusionDoc* document) {
    host::Ref<host::Operator> op(tool.NewOperator(document));
    if (!op) throw Failure(kErrMemory, "out of memory");
    return op;
}

} // namespace

Instance::Instance(const host::Registry& tool, Effect effect)
    : effect_(effect)
    , document_(ParametersOf(effect))
    , operator_(NewTool(tool, &document_))
    , plan_(*operator_) {
    OpenParameters(ParametersOf(effect));
    OpenClips();
    const std::lock_guard lock(instancesMutex);
    Instances()[effect] = this;
}

Instance::~Instance() {
    static_cast<void>(TakeMessage(*operator_));
    const std::lock_guard lock(instancesMutex);
    Instances().erase(effect_);
}

Instance& Instance::Of(Effect effect) {
    const std::lock_guard lock(instancesMutex);
    const auto found = Instances().find(effect);
    if (found == Instances().end()) throw Failure(kFailed, "");
    return *found->second;
}

void Instance::OpenParameters(ParamSet parameters) {
    for (const ParameterPlan& plan : plan_.parameters) {
        Param param = nullptr;
        Check(TheHost().param->paramGetHandle(parameters, plan.name.c_str(), &param, nullptr),
              plan.name.c_str());
        if (plan.inputs.empty()) words_ = param;
        int channel = 0;
        for (Input* input : plan.inputs)
            input->KeepValueIn(
                std::make_unique<ParameterStore>(exchange_, param, plan.kind, channel++, *input));
    }
}

void Instance::OpenClips() {
    const auto open = [&](const char* name) {
        Clip clip = nullptr;
        Check(TheHost().effect->clipGetHandle(effect_, name, &clip, nullptr), name);
        return clip;
    };
    for (const ClipPlan& plan : plan_.clips) {
        Clip clip = open(plan.name.c_str());
        links_.push_back(
            {plan.name, clip, std::make_unique<ClipFrames>(clip, exchange_.refusals), plan.input});
    }
    output_ = open(kOutput);
}

} // namespace ofx
