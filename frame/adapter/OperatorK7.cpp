#include "frame/adapter/OperatorK7.h"

#include "frame/adapter/ImageTransfer.h"

#include <algorithm>
#include <new>

namespace k7 {

using namespace host;

OperatorK7::OperatorK7(const OperatorArguments& arguments)
    : ThreadedOperator(arguments.registry, arguments.value, arguments.tags) {
    chunks_.Owner = this;
}

OperatorK7::~OperatorK7() = default;

void OperatorK7::TakeCore(std::unique_ptr<PluginK7> core) {
    core_ = std::move(core);
    core_->Operator = this;
    core_->Chunks = &chunks_;
}

// One frame.

void OperatorK7::Process(Request* request) {
    const CurrentChunksScope scope(&chunks_);
    chunks_.Request = request;

    core_->ProcessAlpha = true;
    TimeExtent extent(kTimeUndefined, kTimeUndefined, kTimeUndefined);
    GetExtent(extent, nullptr);
    core_->Time = request->Time;
    core_->ExtentStart = extent.Start;
    core_->ExtentEnd = extent.End;

    try {
        RunFrame(request);
    } catch (const std::bad_alloc&) {
        // The host gets a frame without output, not an exception.
    }
    EndFrame();
}

void OperatorK7::RunFrame(Request* request) {
    const auto* floats =
        floatPictures_ ? dynamic_cast<const Number*>(request->GetInputData(floatPictures_, 0)) : nullptr;
    if (floats && floats->Value != 0.0)
        RunFrameIn<float>(request);
    else
        RunFrameIn<u16>(request);
}

template <class Sample>
void OperatorK7::RunFrameIn(Request* request) {
    const auto* main = dynamic_cast<const Image*>(request->GetInputData(mainInput_, 0));
    const auto input = HostToK7Image<Sample>(main);
    if (!input) return; // without a picture, or if its allocation fails, there is no output
    ChooseSecondFrames(request);
    const auto second = ReadSecondImage(request, main, *input);
    ReadFrameValues(request);
    if (AbortFlag) return;
    const auto output = PictureK7<Sample>::MakeCopy(*input);
    if (!output || (secondSlot_ && secondUse_ == SecondImage::FitToMain && !second)) return;

    RunCore(input.get(), second.get(), output.get());
    if (AbortFlag) return; // saves converting a frame that nobody takes
    Image* result = K7ImageToHost(*main, *output);
    if (!result) return;
    if (AbortFlag)
        result->Recycle();
    else
        request->SetOutputData(output_, result);
}

template <class Sample>
void OperatorK7::RunCore(PictureK7<Sample>* input, PictureK7<Sample>* second, PictureK7<Sample>* output) {
    const struct Emptied {
        ~Emptied() { op.FillSlots<Sample>(nullptr, nullptr, nullptr); }
        OperatorK7& op;
    } emptied{*this}; // also where the core throws
    FillSlots(input, second, output);
    if (std::exchange(firstProcess_, false)) WithValues([&](bool) { core_->RefreshControls(); });
    core_->Process();
}

template <class Sample>
void OperatorK7::FillSlots(PictureK7<Sample>* input, PictureK7<Sample>* second, PictureK7<Sample>* output) {
    mainSlot_->Of<Sample>() = input;
    if (secondSlot_) secondSlot_->Of<Sample>() = second;
    outputSlot_->Of<Sample>() = output;
}

void OperatorK7::ChooseSecondFrames(Request* request) {
    if (!secondSlot_ || secondUse_ != SecondImage::AtOtherTimes) return;
    const bool connected = dynamic_cast<const Image*>(request->GetInputData(secondInput_, 0));
    secondSlot_->Input = connected ? secondFrames_.get() : mainFrames_.get();
}

template <class Sample>
std::unique_ptr<PictureK7<Sample>> OperatorK7::ReadSecondImage(Request* request, const Image* main,
                                                               const PictureK7<Sample>& like) {
    if (!secondSlot_ || secondUse_ != SecondImage::FitToMain) return nullptr;
    const auto* image = dynamic_cast<const Image*>(request->GetInputData(secondInput_, 0));
    return HostToK7Image(image ? image : main, like, core_.get());
}

void OperatorK7::ReadFrameValues(Request* request) {
    RequestValues values(request);
    const std::lock_guard lock(valuesMutex_);
    frameInWork_ = true;
    for (ControlK7* control : controls_) control->ReadValue(values);
}

void OperatorK7::EndFrame() {
    std::optional<double> time;
    {
        const std::lock_guard lock(valuesMutex_);
        frameInWork_ = false;
        time = std::exchange(mirrorAfterFrame_, std::nullopt);
    }
    if (time) MirrorControls(*time);
}

void OperatorK7::MirrorControls(double time) {
    InputValues values(time);
    const std::lock_guard lock(valuesMutex_);
    if (frameInWork_) mirrorAfterFrame_ = time;
    for (ControlK7* control : mirrored_)
        frameInWork_ ? control->ReadShown(values) : control->ReadValue(values);
}

void OperatorK7::WithValues(const std::function<void(bool frameInWork)>& action) {
    const std::lock_guard lock(valuesMutex_);
    action(frameInWork_);
}

// Changes.

void OperatorK7::NotifyChanged(Input* in, Parameter* param, double time, TagList* tags) {
    InputChanged(in);
    if (!param) return;
    if (Document && Document->Silent) return;
    if (time != kTimeUndefined) MirrorControls(time);
    const std::lock_guard lock(valuesMutex_); // reactions read values, and mark and hide controls
    for (auto& [control, reaction] : reactions_) {
        const bool concerned =
            std::any_of(std::begin(control->Input), std::end(control->Input), [&](ControlInput* input) {
                return input && static_cast<HostInput*>(input)->Get() == in;
            });
        if (!concerned) continue;
        if (control->Changing)
            control->Changing = false;
        else
            reaction(time);
    }
    Operator::NotifyChanged(in, param, time, tags);
}

void OperatorK7::InputChanged(Input*) {}

void OperatorK7::OnChange(ControlK7& control, Reaction reaction) {
    reactions_.emplace_back(&control, std::move(reaction));
}

// The core's owner.

void OperatorK7::ProcessChunk(Request*, long index) {
    RunChunk(chunks_, core_.get(), static_cast<int>(index));
}

int OperatorK7::ProcessorCount() const {
    return GetApp()->ProcessorCount;
}

int OperatorK7::Division() const {
    const int parts = GetApp()->Division;
    return parts > 0 && Class() && Class()->HasAttr(kTagRegShowsDivision) ? parts : ProcessorCount();
}

void OperatorK7::DoMultiProcess(ChunkRecord& record, int chunks) {
    ThreadedOperator::DoMultiProcess(static_cast<Request*>(record.Request), chunks);
}

bool OperatorK7::AbortRaised() const {
    return AbortFlag.load(std::memory_order_relaxed);
}

void OperatorK7::TakeMessage(const char* text) {
    GetApp()->Message(*this, text);
}

} // namespace k7
