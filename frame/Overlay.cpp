#include "frame/Overlay.h"

#include <cmath>
#include <numbers>

namespace k7 {

namespace {

constexpr float kHitDistance = 5.0f; // display pixels
constexpr double kDegrees = 180.0 / std::numbers::pi;

} // namespace

void OverlayControlK7::Draw() {
    OverlayColour(*Owner, Colour[0], Colour[1], Colour[2]);
    DrawShape();
}

void OverlayControlK7::Event(int event, float x, float y) {
    switch (event) {
    case kOverlayHover:
        Hover = HandleAt(x, y);
        break;
    case kOverlayPress:
        Hover = Active = HandleAt(x, y);
        break;
    case kOverlayDrag:
        if (Active) DragTo(x, y);
        break;
    default:
        break;
    }
    if (Active) Sync(event);
    if (event == kOverlayRelease) Active = 0;
}

bool OverlayControlK7::HitsHandle(float handleX, float handleY, float x, float y) const {
    const float d = kHitDistance / Owner->Zoom;
    return handleX > x - d && handleX < x + d && handleY > y - d && handleY < y + d;
}

void OverlayControlK7::Sync(int code) {
    if (code == kOverlayDrag) WriteValues();
    if (code != kOverlayPress && code != kOverlayRelease) return;
    for (int i = 0; i < ControlK7::kInputs; ++i) {
        ControlInput* input = Link.Input[i];
        if (!input || !Concerns(i)) continue;
        if (code == kOverlayPress)
            input->StartUndo(UndoTitle(*input));
        else
            input->EndUndo(true);
    }
}

std::string OverlayControlK7::UndoTitle(ControlInput& input) const {
    const std::string name = input.Name().empty() ? "Unknown" : input.Name();
    return Owner->OperatorName.empty() ? name : Owner->OperatorName + ": " + name;
}

void OverlayControlK7::WriteNumber(int i, ControlK7* control, double value) {
    if (Link.Input[i]) Link.Input[i]->WriteNumber(Owner->DocumentTime, value);
    auto* shadow = dynamic_cast<FloatControlK7*>(control);
    if (!shadow) return;
    shadow->Shown = value;
    if (!Owner->KeepValues) shadow->Value = value;
}

void OverlayControlK7::WritePoint(int i, double x, double y) {
    if (Link.Input[i]) Link.Input[i]->WritePoint(Owner->DocumentTime, x, y);
    auto* shadow = dynamic_cast<PositionControlK7*>(Link.Control[i]);
    if (!shadow) return;
    shadow->Shown = {x, y};
    if (!Owner->KeepValues) shadow->Value = {x, y};
}

void OneHandleOverlayK7::DrawHandle(float x, float y) {
    HandleX = x;
    HandleY = y;
    OverlayBox(*Owner, x, y);
}

void CrosshairOverlayK7::DrawAt(const PositionControlK7::Position& position) {
    if (!Visible) return;
    X = static_cast<float>(position.x);
    Y = static_cast<float>(position.y);
    Draw();
}

void CrosshairOverlayK7::DrawShape() {
    const float x = PixelX(X);
    const float y = PixelY(Y);
    OverlayCross(*Owner, x, y, Diagonals);
    DrawHandle(x, y);
}

void CrosshairOverlayK7::DragTo(float x, float y) {
    X = x / static_cast<float>(Owner->ImageWidth);
    Y = y / static_cast<float>(Owner->ImageHeight);
}

void CrosshairOverlayK7::WriteValues() {
    WritePoint(0, X, Y);
}

void LineOverlayK7::DrawShape() {
    const float x1 = PixelX(X1);
    const float y1 = PixelY(Y1);
    const float x2 = PixelX(X2);
    const float y2 = PixelY(Y2);
    OverlayLine(*Owner, x1, y1, x2, y2);
    DrawHandle(std::fmin(x1, x2) + std::fabs(x1 - x2) / 2.0f, std::fmin(y1, y2) + std::fabs(y1 - y2) / 2.0f);
}

void LineOverlayK7::DragTo(float x, float y) {
    const float halfX = (X1 - X2) / 2.0f;
    const float halfY = (Y1 - Y2) / 2.0f;
    const float middleX = x / static_cast<float>(Owner->ImageWidth);
    const float middleY = y / static_cast<float>(Owner->ImageHeight);
    X1 = middleX + halfX;
    Y1 = middleY + halfY;
    X2 = middleX - halfX;
    Y2 = middleY - halfY;
}

void LineOverlayK7::WriteValues() {
    WritePoint(0, X1, Y1);
    WritePoint(1, X2, Y2);
}

void AngleOverlayK7::DrawShape() {
    const double angle = Angle / kDegrees;
    const float length = PixelX(Length);
    const float startX = PixelX(X);
    const float startY = PixelY(Y);
    const float endX = startX + static_cast<float>(std::cos(angle)) * length;
    const float endY =
        startY + static_cast<float>(std::sin(angle)) * length * Owner->AspectX / Owner->AspectY;
    OverlayLine(*Owner, startX, startY, endX, endY);
    DrawHandle(endX, endY);
}

void AngleOverlayK7::DragTo(float x, float y) {
    const float dx = x - PixelX(X);
    const float dy = y - PixelY(Y);
    const float squareY = Owner->AspectY / Owner->AspectX * std::fabs(dy);
    const float t = static_cast<float>(std::atan2(squareY, static_cast<double>(std::fabs(dx))) * kDegrees);
    if (dx > 0.0f)
        Angle = dy >= 0.0f ? t : 360.0f - t;
    else if (dy < 0.0f)
        Angle = 180.0f + t;
    else if (dx < 0.0f || dy > 0.0f) // at the exact centre the hand stays where it was
        Angle = 180.0f - t;
}

void AngleOverlayK7::WriteValues() {
    WriteNumber(0, Link.Control[0], Angle);
}

} // namespace k7
