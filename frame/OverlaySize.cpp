#include "frame/Overlay.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace k7 {

namespace {

constexpr float kRadians = std::numbers::pi_v<float> / 180.0f;
constexpr int kCircleStep = 4; // image pixels of arc per stroke

struct Vector {
    float x;
    float y;
};

Vector Rotated(Vector v, float degrees) {
    const float c = std::cos(degrees * kRadians);
    const float s = std::sin(degrees * kRadians);
    return {v.x * c - v.y * s, v.x * s + v.y * c};
}

} // namespace

bool SizeOverlayK7::Concerns(int i) const {
    const bool dragged = Active == 1 || Active == i + 2;
    return i < 2 && dragged && Link.Control[2 + i];
}

void SizeOverlayK7::WriteValues() {
    if (!Link.Input[0]) return;
    const float low = static_cast<float>(Link.Input[0]->ShownLow());
    const float high = static_cast<float>(Link.Input[0]->ShownHigh());
    Width = std::min(std::max(low, Width), high); // NaN becomes the lowest
    Height = std::min(std::max(low, Height), high);
    if (Concerns(0)) WriteNumber(0, Link.Control[2], Width);
    if (Concerns(1)) WriteNumber(1, Link.Control[3], Height);
}

bool SizeOverlayK7::HitsNumber(int handle, float x, float y) const {
    return HitsHandle(HandleX[handle - 1], HandleY[handle - 1], x, y);
}

void SizeOverlayK7::SetHandle(int number, float x, float y) {
    HandleX[number - 1] = x;
    HandleY[number - 1] = y;
}

void SizeOverlayK7::DrawBox(int number) const {
    OverlayBox(*Owner, HandleX[number - 1], HandleY[number - 1]);
}

void CircleOverlayK7::DrawShape() {
    const float cx = PixelX(X);
    const float cy = PixelY(Y);
    const float width = PixelX(Width);
    const float height = PixelX(Height);
    OverlayEllipse(*Owner, cx, cy, width, height, Rotation, Dashed, kCircleStep, 0.0f, 360.0f);

    auto placeHandle = [&](int number, float degrees) {
        const Vector onEllipse = {width / 2.0f * std::cos(degrees * kRadians),
                                  height / 2.0f * std::sin(degrees * kRadians)};
        const Vector at = Rotated(onEllipse, Rotation);
        SetHandle(number, cx + at.x, cy + at.y);
        if (number == 2 || !Circular) DrawBox(number);
    };
    placeHandle(2, 0.0f);
    placeHandle(3, -90.0f);
    placeHandle(1, -45.0f);
}

int CircleOverlayK7::HandleAt(float x, float y) const {
    if (HitsNumber(2, x, y)) return 2;
    if (Circular) return 0;
    return HitsNumber(3, x, y) ? 3 : HitsNumber(1, x, y) ? 1 : 0;
}

void CircleOverlayK7::DragTo(float x, float y) {
    const float w = static_cast<float>(Owner->ImageWidth);
    const float dx = x - PixelX(X);
    const float dy = y - PixelY(Y);
    if (Active == 2) {
        Width = 2.0f * OverlayDistance(dx, dy) / w;
    } else if (Active == 3) {
        Height = 2.0f * OverlayDistance(dx, dy) / w;
    } else {
        const float ratio = Height / Width;
        const float diagonal = std::cos(-45.0f * kRadians);
        const float r = dx / (std::cos(Rotation * kRadians) * diagonal +
                              diagonal * ratio * std::sin(Rotation * kRadians));
        Width = 2.0f * r / w;
        Height = 2.0f * r * ratio / w;
    }
}

void RectangleOverlayK7::DrawShape() {
    const float a = Owner->AspectX / Owner->AspectY;
    const float cx = PixelX(X);
    const float cy = PixelY(Y);
    const float w = PixelX(Width) / 2.0f;
    const float h = PixelY(Square ? Width : Height) / a / 2.0f;
    auto place = [&](float u, float v) {
        const Vector turned = Rotated({u, v}, Rotation);
        return Vector{cx + turned.x, cy + turned.y * a};
    };

    const Vector corners[4] = {place(w, h), place(w, -h), place(-w, -h), place(-w, h)};
    for (int i = 0; i < 4; ++i) {
        const Vector& from = corners[i];
        const Vector& to = corners[(i + 1) % 4];
        OverlayLine(*Owner, from.x, from.y, to.x, to.y);
    }

    const Vector handles[3] = {corners[1], place(w, 0.0f), place(0.0f, -h)};
    for (int number = 1; number <= 3; ++number) {
        SetHandle(number, handles[number - 1].x, handles[number - 1].y);
        if (number < 3 || !Square) DrawBox(number);
    }
    if (Active) DrawBox(Active);
}

int RectangleOverlayK7::HandleAt(float x, float y) const {
    for (int number = 1; number <= 3; ++number)
        if (HitsNumber(number, x, y)) return number;
    return 0;
}

void RectangleOverlayK7::DragTo(float x, float y) {
    const float a = Owner->AspectX / Owner->AspectY;
    const float dx = x - PixelX(X);
    const float dy = y - PixelY(Y);
    const float c = std::cos(-Rotation * kRadians);
    const float s = std::sin(-Rotation * kRadians);
    const float u = c * dx - dy / a * s;
    const float v = dx * a * s + c * dy;
    const float w = static_cast<float>(Owner->ImageWidth);
    const float h = static_cast<float>(Owner->ImageHeight);
    if (Active == 1) {
        Width = 2.0f * std::fabs(u) / w;
        Height = 2.0f * std::fabs(v) / h;
    } else if (Active == 2) {
        Width = 2.0f * OverlayDistance(u, v) / w;
    } else {
        Height = 2.0f * OverlayDistance(u, v) / h;
    }
}

} // namespace k7
