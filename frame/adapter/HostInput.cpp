#include "frame/adapter/HostInput.h"

#include "frame/adapter/ImageTransfer.h"

namespace k7 {

static_assert(kTimeNow == host::kTimeNow);

void HostInput::WriteNumber(double time, double value) {
    input_->SetSource(host::AutoNumber(value).get(), time, 1, nullptr);
}

void HostInput::WritePoint(double time, double x, double y) {
    input_->SetSource(host::AutoParameter(new host::Point(x, y, 0.0)).get(), time, 1, nullptr);
}

double HostInput::ReadNumber(double time) {
    double value = 0.0;
    InputValues(time).Number(this, &value);
    return value;
}

void HostInput::SetDisabled(bool on) {
    input_->SetAttrs({{host::kTagDisabled, on}});
}
void HostInput::SetShown(bool on) {
    input_->SetAttrs({{host::kTagShown, on}});
}
double HostInput::ShownLow() {
    return input_->GetAttrD(host::kTagShownLow);
}
double HostInput::ShownHigh() {
    return input_->GetAttrD(host::kTagShownHigh);
}
std::string HostInput::Name() {
    return input_->Name();
}
void HostInput::StartUndo(const std::string& title) {
    input_->StartUndo(title.c_str(), nullptr);
}
void HostInput::EndUndo(bool keep) {
    input_->EndUndo(keep, nullptr);
}

namespace {

host::Input* InputOf(ControlInput* input) {
    return static_cast<HostInput*>(input)->Get();
}

} // namespace

bool HostValues::Number(ControlInput* input, double* value) {
    const auto* number = dynamic_cast<const host::Number*>(Get(InputOf(input)));
    if (number) *value = number->Value;
    return number;
}

bool HostValues::Point(ControlInput* input, double* x, double* y) {
    const auto* point = dynamic_cast<const host::Point*>(Get(InputOf(input)));
    if (!point) return false;
    *x = point->X;
    *y = point->Y;
    return true;
}

bool HostValues::Text(ControlInput* input, std::string* text) {
    const auto* parameter = dynamic_cast<const host::Text*>(Get(InputOf(input)));
    if (parameter) *text = parameter->Value;
    return parameter;
}

template <class Sample>
bool HostFrames::Read(double time, PictureK7<Sample>& target) {
    // Clamp the time to the clip, whose end lies one past its last frame.
    host::TimeExtent extent(host::kTimeUndefined, host::kTimeUndefined, host::kTimeUndefined);
    operator_->GetExtent(extent, nullptr);
    if (!(time >= extent.Start)) time = extent.Start;
    if (time > extent.End - 1.0) time = extent.End - 1.0;

    const host::Ref<host::Parameter> source(input_->GetSource(time));
    return HostIntoK7Image(dynamic_cast<const host::Image*>(source.get()), target);
}

template bool HostFrames::Read(double time, K7Image& target);
template bool HostFrames::Read(double time, FloatImageK7& target);

} // namespace k7
