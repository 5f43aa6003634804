// What an instance answers to the host's questions, and to its changes.

#include "host/Idle.h"
#include "ofx/Instance.h"
#include "ofx/Names.h"

#include <algorithm>

namespace ofx {

using host::Input;

Status Instance::Changed(const Properties& arguments) {
    // Changes by the host's time, by plug-ins and by loading have no reactions.
    const bool byUser = arguments.Get(kPropChangeReason, "") == kChangeUserEdited;
    if (!byUser || arguments.Get(kPropType, "") != kTypeParameter) return kOk;
    const std::string name = arguments.Get(kPropName, "");
    for (const ParameterPlan& plan : plan_.parameters)
        if (plan.name == name && !plan.inputs.empty()) UserChanged(plan, arguments.Get(kPropTime, 0.0));
    return kOk;
}

void Instance::UserChanged(const ParameterPlan& plan, double time) {
    Input& input = *plan.inputs.front();
    document_.CurrentTime = time;
    const bool reacts = input.GetAttrI(host::kTagReacts) != 0;
    if (reacts) input.StartUndo(plan.label.c_str(), nullptr);
    const host::Ref<host::Parameter> value(input.GetSource(time));
    operator_->NotifyChanged(&input, value.get(), time, nullptr);
    if (reacts) input.EndUndo(true, nullptr);
}

namespace {

void SetSides(const Properties& answers, const std::string& name, const RectD& box) {
    const double sides[] = {box.x1, box.y1, box.x2, box.y2};
    for (int i = 0; i < 4; ++i) answers.Set(name.c_str(), sides[i], i);
}

} // namespace

/// Frames are computed from whole pictures.
Status Instance::AnswerRegionsOfInterest(const Properties& arguments, const Properties& answers) {
    const double time = arguments.Get(kPropTime, 0.0);
    for (const Link& link : links_) {
        RectD whole{};
        if (IsConnected(link.clip) &&
            TheHost().effect->clipGetRegionOfDefinition(link.clip, time, &whole) == kOk)
            SetSides(answers, "OfxImageClipPropRoI_" + link.name, whole);
    }
    return kOk;
}

Status Instance::AnswerFramesNeeded(const Properties& arguments, const Properties& answers) {
    if (plan_.framesBefore == 0) return kReplyDefault;
    const double time = arguments.Get(kPropTime, 0.0);
    // Tools clamp other times to the clip, and read as many frames at its ends as in its middle.
    const host::TimeExtent extent = Extent();
    const auto within = [&](double at) { return std::max(std::min(at, extent.End - 1.0), extent.Start); };
    const double start = within(time - plan_.framesBefore);
    const double first = std::min(time, start);
    const double last = std::max(time, within(start + plan_.framesBefore));
    for (const Link& link : links_) {
        const std::string name = "OfxImageClipPropFrameRange_" + link.name;
        answers.Set(name.c_str(), first, 0);
        answers.Set(name.c_str(), last, 1);
    }
    return kOk;
}

bool Instance::RegionOfMain(double time, RectD* region) const {
    return TheHost().effect->clipGetRegionOfDefinition(MainClip(), time, region) == kOk &&
           region->x2 > region->x1 && region->y2 > region->y1;
}

double Instance::AspectOfMain() const {
    PropertySet set = nullptr;
    if (TheHost().effect->clipGetPropertySet(MainClip(), &set) != kOk) return 1.0;
    const double aspect = Properties(set).Get(kPixelAspect, 1.0);
    return aspect > 0.0 ? aspect : 1.0;
}

Status Instance::AnswerRegionOfDefinition(const Properties& arguments, const Properties& answers) {
    RectD region{};
    if (!IsConnected(MainClip()) || !RegionOfMain(arguments.Get(kPropTime, 0.0), &region))
        return kReplyDefault;
    SetSides(answers, kRegionOfDefinition, region);
    return kOk;
}

Status Instance::AnswerClipPreferences(const Properties& answers) {
    if (!plan_.varies) return kReplyDefault;
    answers.Set(kFrameVarying, 1);
    return kOk;
}

Status Instance::AnswerIsIdentity(const Properties& arguments, const Properties& answers) {
    const double time = arguments.Get(kPropTime, 0.0);
    if (!host::IsIdle(*operator_, time)) return kReplyDefault;
    answers.Set(kPropName, kSource);
    answers.Set(kPropTime, time);
    return kOk;
}

} // namespace ofx
