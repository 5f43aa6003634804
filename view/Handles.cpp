#include "view/Handles.h"

#include <GL/gl.h>

namespace view {

Handles::Handles(host::Operator& op) : operator_(op) {
    op.AddControls(this, nullptr);
    op.Controls.ObtainReadLock();
    for (const auto& control : op.Controls.Entries)
        if (control->Preview == this) {
            control->Retain();
            control_ = host::Ref<host::OperatorControl>(control.get());
        }
    op.Controls.ReleaseReadLock();
}

void Handles::Place(const host::Image& picture, const Placement& placement, double viewHeight) {
    ImageWidth = picture.Width;
    ImageHeight = picture.Height;
    AspectX = picture.AspectX;
    AspectY = picture.AspectY;
    const QSizeF shown = placement.Shown();
    DisplayWidth = shown.width();
    DisplayHeight = shown.height();
    left_ = placement.Corner().x();
    bottom_ = viewHeight - placement.Corner().y() - shown.height();
}

void Handles::Draw(double lineWidth) {
    if (!control_) return;
    glLineWidth(static_cast<float>(lineWidth));
    operator_.GLDrawControls(control_.get(), this, nullptr);
}

host::Ref<host::Point> Handles::PointTo(const QPointF& place) {
    PointerX = place.x();
    PointerY = place.y();
    return host::Ref<host::Point>(new host::Point(place.x(), place.y(), 0.0));
}

host::Input* Handles::At(const QPointF& place) {
    if (!control_) return nullptr;
    PointTo(place);
    return operator_.ControlCommand(control_.get(), this, host::FuID("CCMD_GetInputAt"), nullptr, nullptr);
}

bool Handles::Press(const QPointF& place) {
    return control_ &&
           operator_.ControlDown(control_.get(), this, PointTo(place).get(), nullptr) == host::kDragControl;
}

void Handles::Move(const QPointF& place) {
    operator_.ControlMove(control_.get(), this, PointTo(place).get(), nullptr);
}

void Handles::Release(const QPointF& place) {
    operator_.ControlUp(control_.get(), this, PointTo(place).get(), nullptr);
}

void Handles::Color4ub(int red, int green, int blue, int alpha) {
    glColor4ub(static_cast<GLubyte>(red), static_cast<GLubyte>(green), static_cast<GLubyte>(blue),
               static_cast<GLubyte>(alpha));
}

} // namespace view
