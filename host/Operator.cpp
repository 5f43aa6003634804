#include "host/Operator.h"

#include "host/Application.h"
#include "host/Common.h"

#include <algorithm>

namespace host {

namespace {

FusionDoc* DocumentOf(const TagList& tags) {
    const TagValue* value = tags.Find(kTagDocument);
    const auto* pointer = value ? std::get_if<const void*>(value) : nullptr;
    return pointer ? static_cast<FusionDoc*>(const_cast<void*>(*pointer)) : nullptr;
}

} // namespace

Operator::Operator(const Registry* registry, const ScriptVal&, const TagList& tags)
    : Document(DocumentOf(tags))
    , registry_(registry) {
    if (registry) Name = registry->GetAttrS(kTagRegName);
}

Operator::~Operator() = default;

int Operator::AddControlPage(const char* name, const TagList&) {
    pages_.emplace_back(name);
    return static_cast<int>(pages_.size()) - 1;
}

Input* Operator::AddInput(const FuID& name, const FuID& id, const TagList& tags) {
    inputs_.emplace_back(new Input(this, name, id, tags));
    return inputs_.back().get();
}

Output* Operator::AddOutput(const FuID& name, const FuID& id, const TagList& tags) {
    outputs_.emplace_back(new Output(name, id, tags));
    return outputs_.back().get();
}

void Operator::AddCommonControls() {
    common_ = std::make_unique<CommonControls>(*this);
}

void Operator::Render(Request* request) {
    frameTime_ = request->Time;
    if (common_)
        common_->Render(*request);
    else
        Process(request);
}

void Operator::Process(Request*) {}

void Operator::NotifyChanged(Input*, Parameter*, double, TagList*) {
    ++changes_;
}

void Operator::GetExtent(TimeExtent& extent, TagList*) {
    extent = extent_;
}

void Operator::AddControls(PreviewInfo*, TagList*) {}
void Operator::GLDrawControls(OperatorControl*, PreviewInfo*, TagList*) {}
int Operator::ControlDown(OperatorControl*, PreviewInfo*, const Point*, TagList*) {
    return 0;
}
int Operator::ControlMove(OperatorControl*, PreviewInfo*, const Point*, TagList*) {
    return 0;
}
int Operator::ControlUp(OperatorControl*, PreviewInfo*, const Point*, TagList*) {
    return 0;
}
Input* Operator::ControlCommand(OperatorControl*, PreviewInfo*, const FuID&, void*, TagList*) {
    return nullptr;
}

void Operator::RegInit(Registry*) {}
void Operator::RegCleanup(Registry*) {}

std::vector<Input*> Operator::Inputs() const {
    std::vector<Input*> inputs;
    for (const Ref<Input>& input : inputs_) inputs.push_back(input.get());
    return inputs;
}

std::vector<Output*> Operator::Outputs() const {
    std::vector<Output*> outputs;
    for (const Ref<Output>& output : outputs_) outputs.push_back(output.get());
    return outputs;
}

Input* Operator::FindInput(const std::string& id) const {
    for (const Ref<Input>& input : inputs_)
        if (input->Id() == id) return input.get();
    return nullptr;
}

const FuID ThreadedOperator::ClassID("ThreadedOperator", true);

void ThreadedOperator::ProcessChunk(Request*, long) {}

void ThreadedOperator::DoMultiProcess(Request* request, long chunks) {
    GetApp()->RunOnThreads(chunks, [&](long index) { ProcessChunk(request, index); });
}

Parameter* Request::GetInputData(Input* input, int) {
    const auto known = inputs_.find(input);
    if (known != inputs_.end()) return known->second.get();
    return inputs_.emplace(input, Ref<Parameter>(input->GetSource(Time))).first->second.get();
}

void Request::SetOutputData(Output* output, Parameter* value) {
    outputs_[output] = Ref<Parameter>(value);
}

Parameter* Request::OutputData(const Output* output) const {
    const auto found = outputs_.find(output);
    return found == outputs_.end() ? nullptr : found->second.get();
}

} // namespace host
