// One frame of an instance.

#include "ofx/Errands.h"
#include "ofx/Instance.h"
#include "ofx/Names.h"

#include <cmath>
#include <utility>

namespace ofx {

using host::Depth;

Status Instance::Render(const Properties& arguments) {
    const std::lock_guard lock(rendering_);
    if (std::exchange(told_, true)) ClearMessage(effect_);
    const HostPicture output(output_, arguments.Get(kPropTime, 0.0));
    if (!IsConnected(MainClip())) return Clear(output, arguments.Get(kRenderWindow, output.bounds)), kOk;

    ConnectClips();
    struct Released {
        Instance& instance;
        ~Released() { instance.ReleaseClips(); }
    } released{*this};
    RenderFrame(arguments, output);
    told_ = false;
    return kOk;
}

void Instance::ConnectClips() {
    for (Link& link : links_) link.input->Connect(IsConnected(link.clip) ? link.frames.get() : nullptr);
}

void Instance::ReleaseClips() {
    for (Link& link : links_) {
        link.input->Connect(nullptr);
        link.frames->End();
    }
}

void Instance::RenderFrame(const Properties& arguments, const HostPicture& output) {
    const double time = arguments.Get(kPropTime, 0.0);
    const HostPicture& main = links_.front().frames->At(time);
    if (main.depth != output.depth) throw Failure(kImageFormat, "source and output must have the same depth");
    for (Link& link : links_) link.frames->Begin(main.region);
    operator_->SetExtent(Extent());
    SetDepth(main.depth, time);
    exchange_.pixelScale = ScaleOf(main, arguments, time);

    host::Request request(time);
    // Read here, values do not each cost a call across threads while the frame is rendered.
    for (host::Input* input : operator_->Inputs())
        if (input->DataType() != host::Input::Type::Image) request.GetInputData(input, 0);
    RunTool(request);
    if (operator_->AbortFlag) return;
    const auto* result = dynamic_cast<const host::Image*>(request.OutputData(operator_->Outputs().front()));
    if (!result) throw Failure(kErrMemory, "out of memory");
    WriteResult(*result, main.region, output, arguments.Get(kRenderWindow, output.bounds));
}

void Instance::RunTool(host::Request& request) {
    operator_->AbortFlag = false;
    WorkAside([&] { operator_->Render(&request); },
              [&] {
                  if (exchange_.refusals.Any() || TheHost().effect->abort(effect_))
                      operator_->AbortFlag = true;
              });
    exchange_.pixelScale = 1.0;
}

/// Half and float frames are rendered in floats, the others in words.
void Instance::SetDepth(Depth depth, double time) {
    if (!plan_.depthSwitch) return;
    int words = 0;
    Check(TheHost().param->paramGetValueAtTime(words_, time, &words), kWordsParameter);
    const bool floats = !words && (depth == Depth::Half || depth == Depth::Float);
    if (floats == std::exchange(floats_, floats)) return;
    plan_.depthSwitch->SetSource(host::AutoNumber(floats).get(), host::kTimeNow, 1, nullptr);
}

/// Hosts report the scale of a proxy unreliably, so it is measured: pixels of the picture to pixels of its
/// full size. Sides of a proxy are rounded, so the host's scale, or its inverse, is used if it agrees within
/// that rounding.
double Instance::ScaleOf(const HostPicture& main, const Properties& arguments, double time) const {
    RectD region{};
    const double told = arguments.Get(kRenderScale, 1.0);
    const double full = RegionOfMain(time, &region) ? (region.x2 - region.x1) / AspectOfMain() : 0.0;
    if (!(full >= 1.0) || !(full < 1e6)) return told > 0.0 ? told : 1.0;
    for (const double scale : {1.0, told, 1.0 / told})
        if (std::fabs(scale * full - main.region.Width()) < 2.0) return scale;
    return main.region.Width() / full;
}

/// The main clip's frames; the end lies one past the last one.
host::TimeExtent Instance::Extent() const {
    PropertySet set = nullptr;
    double first = 0.0, last = 0.0;
    if (TheHost().effect->clipGetPropertySet(MainClip(), &set) == kOk) {
        first = Properties(set).Get(kFrameRange, 0.0, 0);
        last = Properties(set).Get(kFrameRange, first, 1);
    }
    return {first, last + 1.0, 1.0};
}

} // namespace ofx
