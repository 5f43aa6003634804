#include "ofx/Overlay.h"

#include "ofx/Instance.h"
#include "ofx/Names.h"

#ifdef _WIN32
#include <windows.h>
#endif

#include <GL/gl.h>

#include <cmath>
#include <cstring>

namespace ofx {

namespace {

/// A host's viewport, in the host's coordinates, in which the picture covers its region of definition.
class View : public host::PreviewInfo {
public:
    double TransformXOut(double x) const override { return region.x1 + x * (region.x2 - region.x1); }
    double TransformYOut(double y) const override { return region.y1 + y * (region.y2 - region.y1); }
    void Color4ub(int red, int green, int blue, int alpha) override {
        glColor4ub(static_cast<GLubyte>(red), static_cast<GLubyte>(green), static_cast<GLubyte>(blue),
                   static_cast<GLubyte>(alpha));
    }

    RectD region{0.0, 0.0, 1.0, 1.0};
};

host::Ref<host::OperatorControl> ControlOf(host::Operator& op, View& view) {
    op.AddControls(&view, nullptr);
    host::OperatorControl* found = nullptr;
    op.Controls.ObtainReadLock();
    for (const auto& control : op.Controls.Entries)
        if (control->Preview == &view) found = control.get();
    op.Controls.ReleaseReadLock();
    if (found) found->Retain();
    return host::Ref<host::OperatorControl>(found);
}

/// The on-screen controls of an instance in one viewport.
class Overlay {
public:
    Overlay(Interact interact, Instance& instance)
        : interact_(interact)
        , instance_(instance)
        , control_(ControlOf(instance.Op(), view_)) {}

    ~Overlay() {
        if (dragging_) instance_.Document().CloseStep();
        host::OperatorControlList& controls = instance_.Op().Controls;
        controls.ObtainLock();
        std::erase_if(controls.Entries, [&](const auto& control) { return control->Preview == &view_; });
        controls.ReleaseLock();
    }

    Status Draw(const Properties& arguments) {
        if (!FitTo(arguments)) return kReplyDefault;
        glPushAttrib(GL_ALL_ATTRIB_BITS);
        glDisable(GL_TEXTURE_2D);
        instance_.Op().GLDrawControls(control_.get(), &view_, nullptr);
        glPopAttrib();
        return kOk;
    }

    Status Press(const Properties& arguments) {
        if (!Point(arguments)) return kReplyDefault;
        dragging_ =
            instance_.Op().ControlDown(control_.get(), &view_, nullptr, nullptr) == host::kDragControl;
        return Answer();
    }
    Status Move(const Properties& arguments) {
        if (!dragging_ || !Point(arguments)) return kReplyDefault;
        static_cast<void>(instance_.Op().ControlMove(control_.get(), &view_, nullptr, nullptr));
        return Answer();
    }
    Status Release(const Properties& arguments) {
        if (!dragging_ || !Point(arguments)) return kReplyDefault;
        static_cast<void>(instance_.Op().ControlUp(control_.get(), &view_, nullptr, nullptr));
        const Status answer = Answer();
        dragging_ = false;
        return answer;
    }

private:
    /// Updates the picture's position. False if nothing can be shown.
    bool FitTo(const Properties& arguments) {
        const double time = arguments.Get(kPropTime, 0.0);
        if (!control_ || !instance_.RegionOfMain(time, &view_.region)) return false;
        const double width = view_.region.x2 - view_.region.x1;
        const double height = view_.region.y2 - view_.region.y1;
        if (!(width >= 1.0) || !(height >= 1.0)) return false;
        view_.AspectX = instance_.AspectOfMain();
        view_.ImageWidth = static_cast<int>(std::lround(std::min(width / view_.AspectX, 1e6)));
        view_.ImageHeight = static_cast<int>(std::lround(std::min(height, 1e6)));
        const double across = arguments.Get(kPixelScale, 1.0, 0);
        const double up = arguments.Get(kPixelScale, 1.0, 1);
        view_.DisplayWidth = across > 0.0 ? width / across : 0.0;
        view_.DisplayHeight = up > 0.0 ? height / up : 0.0;
        instance_.Document().CurrentTime = time;
        return true;
    }

    bool Point(const Properties& arguments) {
        if (!FitTo(arguments)) return false;
        const RectD& region = view_.region;
        view_.PointerX = (arguments.Get(kPenPosition, 0.0, 0) - region.x1) / (region.x2 - region.x1);
        view_.PointerY = (arguments.Get(kPenPosition, 0.0, 1) - region.y1) / (region.y2 - region.y1);
        return true;
    }

    /// Consumes the event if a widget was hit.
    Status Answer() {
        if (!dragging_) return kReplyDefault;
        if (const InteractSuite* suite = TheHost().interact)
            static_cast<void>(suite->interactRedraw(interact_));
        return kOk;
    }

    Interact interact_;
    Instance& instance_;
    View view_;
    host::Ref<host::OperatorControl> control_;
    bool dragging_ = false;
};

PropertySet PropertiesOf(Interact interact) {
    PropertySet set = nullptr;
    Check(TheHost().interact->interactGetPropertySet(interact, &set), "properties of an overlay");
    return set;
}

Status Create(Interact interact) {
    const Properties properties(PropertiesOf(interact));
    auto effect = static_cast<Effect>(properties.GetPointer(kPropEffectInstance));
    auto overlay = std::make_unique<Overlay>(interact, Instance::Of(effect));
    properties.Set(kPropInstanceData, static_cast<void*>(overlay.get()));
    static_cast<void>(overlay.release()); // until Destroy
    return kOk;
}

Status Run(const char* action, Interact interact, PropertySet inArgs) {
    if (std::strcmp(action, kActionDescribe) == 0) return kOk;
    if (!TheHost().interact) return kMissingHostFeature;
    if (std::strcmp(action, kActionCreateInstance) == 0) return Create(interact);
    auto* overlay = static_cast<Overlay*>(Properties(PropertiesOf(interact)).GetPointer(kPropInstanceData));
    if (!overlay) return kReplyDefault;
    if (std::strcmp(action, kActionDestroyInstance) == 0) {
        delete overlay;
        return kOk;
    }
    const Properties arguments(inArgs);
    if (std::strcmp(action, kInteractDraw) == 0) return overlay->Draw(arguments);

    auto effect = static_cast<Effect>(Properties(PropertiesOf(interact)).GetPointer(kPropEffectInstance));
    Instance& instance = Instance::Of(effect);
    const WriteQueue::Allowed writing(instance.Writes());
    Status status = kReplyDefault;
    if (std::strcmp(action, kInteractPenDown) == 0) status = overlay->Press(arguments);
    if (std::strcmp(action, kInteractPenMotion) == 0) status = overlay->Move(arguments);
    if (std::strcmp(action, kInteractPenUp) == 0) status = overlay->Release(arguments);
    instance.Settle();
    return status;
}

} // namespace

bool HasWidgets(host::Operator& op) {
    View view;
    const bool has = static_cast<bool>(ControlOf(op, view));
    op.Controls.ObtainLock();
    op.Controls.Entries.clear();
    op.Controls.ReleaseLock();
    return has;
}

extern "C" Status OverlayEntry(const char* action, const void* handle, PropertySet inArgs, PropertySet) {
    try {
        return Run(action, static_cast<Interact>(const_cast<void*>(handle)), inArgs);
    } catch (...) {
        return kFailed;
    }
}

} // namespace ofx
