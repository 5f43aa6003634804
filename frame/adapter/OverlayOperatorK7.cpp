#include "frame/adapter/OverlayOperatorK7.h"

#include "frame/adapter/GLSurface.h"

#include <algorithm>
#include <mutex>

namespace k7 {

using namespace host;

namespace {

constexpr float kButtonThreshold = 0.05f;

/// The host's locks in the form that the standard guards take.
struct ForWriting {
    LockableObject& object;
    void lock() { object.ObtainLock(); }
    void unlock() { object.ReleaseLock(); }
};
struct ForReading {
    LockableObject& object;
    void lock() { object.ObtainReadLock(); }
    void unlock() { object.ReleaseReadLock(); }
};

Input* HostInputOf(ControlInput* input) {
    return input ? static_cast<HostInput*>(input)->Get() : nullptr;
}

void TakeSizes(OverlayK7& overlay, const PreviewInfo& preview) {
    overlay.ImageWidth = preview.ImageWidth;
    overlay.ImageHeight = preview.ImageHeight;
    overlay.AspectX = preview.AspectX == 0.0 ? 1.0f : static_cast<float>(preview.AspectX);
    overlay.AspectY = preview.AspectY == 0.0 ? 1.0f : static_cast<float>(preview.AspectY);
    const bool known = preview.DisplayWidth > 0.0 && preview.DisplayHeight > 0.0 && preview.ImageWidth > 0;
    overlay.Zoom = known ? static_cast<float>(preview.DisplayWidth) / overlay.AspectX /
                               static_cast<float>(preview.ImageWidth)
                         : 1.0f;
}

} // namespace

// Setup.

void OverlayOperatorK7::Enter(OverlayControlK7& widget, WidgetColour colour) {
    overlay_ = dynamic_cast<OverlayK7*>(&Core());
    widget.Owner = overlay_;
    widget.Colour[0] = colour.red;
    widget.Colour[1] = colour.green;
    widget.Colour[2] = colour.blue;
    widgets_.push_back(&widget);
}

void OverlayOperatorK7::AddWidget(CrosshairOverlayK7& widget, WidgetColour colour,
                                  PositionControlK7& position) {
    Enter(widget, colour);
    widget.Link.Input[0] = position.Input[0];
    widget.Link.Control[0] = &position;
}

void OverlayOperatorK7::AddWidget(AngleOverlayK7& widget, WidgetColour colour, AngleControlK7& angle) {
    Enter(widget, colour);
    widget.Link.Input[0] = angle.Input[0];
    widget.Link.Control[0] = &angle;
}

void OverlayOperatorK7::AddWidget(LineOverlayK7& widget, WidgetColour colour, PositionControlK7& first,
                                  PositionControlK7& second) {
    Enter(widget, colour);
    widget.Link.Input[0] = first.Input[0];
    widget.Link.Control[0] = &first;
    widget.Link.Input[1] = second.Input[0];
    widget.Link.Control[1] = &second;
}

void OverlayOperatorK7::AddWidget(SizeOverlayK7& widget, WidgetColour colour, PositionControlK7& centre,
                                  FloatControlK7& width, FloatControlK7& height) {
    Enter(widget, colour);
    widget.Link.Control[0] = &centre;
    widget.Link.Input[0] = width.Input[0];
    widget.Link.Control[2] = &width;
    widget.Link.Input[1] = height.Input[0];
    widget.Link.Control[3] = &height;
}

// What the host calls.

void OverlayOperatorK7::AddControls(PreviewInfo* preview, TagList* tags) {
    Operator::AddControls(preview, tags);
    {
        ForWriting lockable{Controls};
        const std::lock_guard lock(lockable);
        const bool known =
            std::any_of(Controls.Entries.begin(), Controls.Entries.end(),
                        [&](const Ref<OperatorControl>& control) { return control->Preview == preview; });
        Ref<Object> made(known ? nullptr : ClassRegistry().New(FuID("OperatorControl"), 0x1b0000, nullptr));
        if (auto* control = dynamic_cast<OperatorControl*>(made.get())) {
            control->Retain();
            control->Preview = preview;
            control->Document = Document;
            control->SetAttrs({{kTagOwner, static_cast<const void*>(this)}});
            Controls.Entries.emplace_back(control);
        }
    }
    pointer_.latched = false;
    pointer_.pressX = pointer_.pressY = 0.0f;
}

void OverlayOperatorK7::GLDrawControls(OperatorControl* control, PreviewInfo* preview, TagList* tags) {
    const FusionDoc* document = control && control->Document ? control->Document : Document;
    if (document) MirrorControls(document->CurrentTime);
    TakeSizes(*overlay_, *preview);
    if (preview->Mode != PreviewInfo::kModeBare && preview->ImageWidth > 0 && preview->ImageHeight > 0) {
        GLSurface surface(*preview);
        overlay_->Surface = &surface;
        WithValues([&](bool) { overlay_->Draw(); });
        overlay_->Surface = nullptr;
    }
    Operator::GLDrawControls(control, preview, tags);
}

int OverlayOperatorK7::ControlDown(OperatorControl* control, PreviewInfo* preview, const Point* point,
                                   TagList* tags) {
    pointer_.button = 1.0f;
    if (pointer_.latched) {
        pointer_.x = pointer_.pressX;
        pointer_.y = pointer_.pressY;
    } else {
        TakePointer(*preview);
        pointer_.pressX = pointer_.x;
        pointer_.pressY = pointer_.y;
    }
    const bool hit = Dispatch();
    if (hit) pointer_.activeControl = control;
    const int result = Operator::ControlDown(control, preview, point, tags);
    if (hit && !pointer_.latched) {
        pointer_.latched = true;
        return kDragControl;
    }

    // A press that hits nothing, or comes twice, is a click: it is released at once.
    if (hit) pointer_.latched = false;
    pointer_.button = 0.0f;
    Dispatch();
    return result;
}

int OverlayOperatorK7::ControlMove(OperatorControl* control, PreviewInfo* preview, const Point* point,
                                   TagList* tags) {
    const int result = Operator::ControlMove(control, preview, point, tags);
    if (!control || control != pointer_.activeControl) return result;
    TakePointer(*preview);
    Dispatch();
    // Drawing settles what the widgets show. Where the host draws later, the same pointer once more does: the
    // drag ends where the first event has put the handle.
    if (control->DrawWhileMoving)
        GLDrawControls(control, preview, tags);
    else
        Dispatch();
    return result;
}

int OverlayOperatorK7::ControlUp(OperatorControl* control, PreviewInfo* preview, const Point* point,
                                 TagList* tags) {
    pointer_.latched = false;
    if (control && control == pointer_.activeControl) {
        pointer_.button = 0.0f;
        TakePointer(*preview);
        Dispatch();
        GLDrawControls(control, preview, tags);
    }
    return Operator::ControlUp(control, preview, point, tags);
}

Input* OverlayOperatorK7::ControlCommand(OperatorControl* control, PreviewInfo* preview, const FuID& command,
                                         void* argument, TagList* tags) {
    if (command == FuID("CCMD_GetInputAt")) {
        TakePointer(*preview);
        Dispatch();
        constexpr int heightHandle = 3;
        for (const OverlayControlK7* widget : widgets_)
            if (widget->Hover) return HostInputOf(widget->Link.Input[widget->Hover == heightHandle ? 1 : 0]);
    }
    return Operator::ControlCommand(control, preview, command, argument, tags);
}

void OverlayOperatorK7::InputChanged(Input* in) {
    const bool linked = std::any_of(widgets_.begin(), widgets_.end(),
                                    [&](const OverlayControlK7* widget) { return Links(*widget, in); });
    if (!linked) return;
    ForReading lockable{Controls};
    const std::lock_guard lock(lockable);
    for (const Ref<OperatorControl>& control : Controls.Entries) control->InputChanged(in);
}

bool OverlayOperatorK7::Links(const OverlayControlK7& widget, const Input* in) const {
    return std::any_of(std::begin(widget.Link.Input), std::end(widget.Link.Input),
                       [&](ControlInput* input) { return input && HostInputOf(input) == in; });
}

// Mouse events.

void OverlayOperatorK7::TakePointer(const PreviewInfo& preview) {
    pointer_.x = static_cast<float>(preview.PointerX);
    pointer_.y = static_cast<float>(preview.PointerY);
}

int OverlayOperatorK7::NextEvent() {
    const bool was = pointer_.previousButton > kButtonThreshold;
    const bool is = pointer_.button > kButtonThreshold;
    pointer_.previousButton = pointer_.button;
    if (is) return was ? kOverlayDrag : kOverlayPress;
    return was ? kOverlayRelease : kOverlayHover;
}

/// Passes the pointer to the core's widgets. True while one of them is being dragged.
bool OverlayOperatorK7::Dispatch() {
    const int event = NextEvent();
    if (overlay_->ImageWidth < 1 || overlay_->ImageHeight < 1) return false; // nothing has been drawn yet

    const FusionDoc* document = pointer_.activeControl && pointer_.activeControl->Document
                                    ? pointer_.activeControl->Document
                                    : Document;
    overlay_->OperatorName = Name;
    overlay_->DocumentTime = document ? document->CurrentTime.load() : kTimeNow;
    const int x = Trunc(static_cast<float>(overlay_->ImageWidth) * pointer_.x + 0.5f);
    const int y = Trunc(static_cast<float>(overlay_->ImageHeight) * pointer_.y + 0.5f);
    WithValues([&](bool frameInWork) {
        overlay_->KeepValues = frameInWork;
        overlay_->Event(event, static_cast<float>(x), static_cast<float>(y));
    });
    return std::any_of(widgets_.begin(), widgets_.end(),
                       [](const OverlayControlK7* widget) { return widget->Active != 0; });
}

} // namespace k7
