#pragma once

#include "frame/Controls.h"

#include <cmath>
#include <string>

namespace k7 {

/// Length of a line, worked out in double precision, which holds the squares: the same everywhere, and asks
/// nothing of a newer C library.
inline float OverlayDistance(float dx, float dy) {
    const double x = dx, y = dy;
    return static_cast<float>(std::sqrt(x * x + y * y));
}

class OverlayControlK7;

/// What widgets draw on: the preview of a host, or a list of strokes in a test. Points are fractions of the
/// picture, x first.
class OverlaySurface {
public:
    virtual ~OverlaySurface() = default;
    virtual void SetColour(int red, int green, int blue) = 0; ///< 0 to 255 each
    virtual void DrawSegment(const float from[2], const float to[2]) = 0;
    virtual void DrawLoop(const float (*points)[2], int count) = 0; ///< a closed outline
};

/// Mouse events of widgets.
enum OverlayEvent { kOverlayHover = 0, kOverlayPress = 1, kOverlayDrag = 2, kOverlayRelease = 3 };

/// The on-screen half of a core: draws its widgets and hands mouse events to them. Coordinates are pixels of
/// the previewed picture. The owner sets the fields before it calls.
class OverlayK7 {
public:
    virtual ~OverlayK7() = default;
    virtual void Draw() {}
    virtual void Event(int event, float x, float y) {
        static_cast<void>(event);
        static_cast<void>(x);
        static_cast<void>(y);
    }

    OverlaySurface* Surface = nullptr;
    std::string OperatorName;  ///< the tool's name in titles of undo steps; may be empty
    double DocumentTime = 0.0; ///< the time at which a drag writes
    bool KeepValues = false;   ///< a frame is using the values: a drag changes only inputs and what is shown
    int ImageWidth = 0;
    int ImageHeight = 0;
    float AspectX = 1.0f;
    float AspectY = 1.0f;
    float Zoom = 1.0f; ///< display pixels per image pixel
};

// Drawing primitives, in image pixels of `view`.

void OverlayColour(const OverlayK7& view, int red, int green, int blue); ///< 0 to 65535 each
void OverlayLine(const OverlayK7& view, float x1, float y1, float x2, float y2);
/// A square of 8 display pixels round a point.
void OverlayBox(const OverlayK7& view, float x, float y);
/// Every second piece, from the second on, of a line cut into pieces of `dash` pixels.
void OverlayDashedLine(const OverlayK7& view, float x1, float y1, float x2, float y2, int dash);
/// `width` and `height` are full axes in pixels, angles in degrees, `step` the pixels of arc per stroke. An
/// ellipse of less than 5 pixels in either axis is not drawn.
void OverlayEllipse(const OverlayK7& view, float cx, float cy, float width, float height, float rotation,
                    bool dashed, int step, float start, float end);
/// Four strokes pointing away from a point, which itself is left free; with `diagonals`, four more between
/// them.
void OverlayCross(const OverlayK7& view, float x, float y, bool diagonals);
/// The two strokes of an arrow head at (x1, y1), opening towards (x2, y2).
void OverlayArrow(const OverlayK7& view, float x1, float y1, float x2, float y2);

/// A widget's connection to the inputs that it writes and the control objects that shadow them. Element 0
/// goes with the position, line start or angle, element 1 with the line's end. A circle or rectangle has its
/// width in Input[0] and its height in Input[1], shadowed by Control[2] and Control[3].
struct OverlayLink {
    ControlInput* Input[ControlK7::kInputs] = {};
    ControlK7* Control[ControlK7::kInputs] = {};
};

/// One widget. Its geometry is refreshed from the controls by each Draw of its core and changed by drags.
class OverlayControlK7 {
public:
    virtual ~OverlayControlK7() = default;

    /// Draws the widget with its current geometry, in its colour.
    void Draw();

    /// Hit test and drag, the pointer at image pixel (x, y). A drag writes to the linked inputs, and is one
    /// step of undo from press to release.
    void Event(int event, float x, float y);

    OverlayLink Link;
    int Colour[4] = {65535, 65535, 65535, 65535}; ///< red, green, blue, alpha
    bool Visible = true;
    int Active = 0; ///< number of the handle being dragged, 0 for none
    int Hover = 0;  ///< number of the handle under the pointer, 0 for none
    OverlayK7* Owner = nullptr;

protected:
    virtual void DrawShape() = 0;
    /// Number of the handle at (x, y), 0 for none.
    virtual int HandleAt(float x, float y) const = 0;
    /// Moves the geometry with the pointer; Active is set.
    virtual void DragTo(float x, float y) = 0;
    /// Writes the geometry to the inputs and control objects.
    virtual void WriteValues() = 0;
    /// Whether Link.Input[i] belongs to the handle being dragged.
    virtual bool Concerns(int i) const { return i == 0; }

    bool HitsHandle(float handleX, float handleY, float x, float y) const;
    float PixelX(float fraction) const { return static_cast<float>(Owner->ImageWidth) * fraction; }
    float PixelY(float fraction) const { return static_cast<float>(Owner->ImageHeight) * fraction; }

    // Write a value to input i and store it in a control object; in its Value only if no frame is using that.
    void WriteNumber(int i, ControlK7* control, double value);
    void WritePoint(int i, double x, double y);

private:
    void Sync(int code);
    std::string UndoTitle(ControlInput& input) const;
};

/// A widget with a single handle, number 1.
class OneHandleOverlayK7 : public OverlayControlK7 {
public:
    float HandleX = 0.0f; ///< pixels, as last drawn
    float HandleY = 0.0f;

protected:
    int HandleAt(float x, float y) const override { return HitsHandle(HandleX, HandleY, x, y) ? 1 : 0; }
    /// Draws the handle's box and remembers its place.
    void DrawHandle(float x, float y);
};

/// A position: Link element 0.
class CrosshairOverlayK7 : public OneHandleOverlayK7 {
public:
    float X = 0.0f; ///< fractions of the picture
    float Y = 0.0f;
    bool Diagonals = false;

    /// Moves to a control's position and draws itself there, if it is visible.
    void DrawAt(const PositionControlK7::Position& position);

protected:
    void DrawShape() override;
    void DragTo(float x, float y) override;
    void WriteValues() override;
};

/// A line that is moved as a whole by its middle: Link elements 0 (first end) and 1.
class LineOverlayK7 : public OneHandleOverlayK7 {
public:
    float X1 = 0.0f; ///< fractions of the picture
    float Y1 = 0.0f;
    float X2 = 0.0f;
    float Y2 = 0.0f;

protected:
    void DrawShape() override;
    void DragTo(float x, float y) override;
    void WriteValues() override;
    bool Concerns(int i) const override { return i < 2; }
};

/// A hand that turns about a point: Link element 0, an angle.
class AngleOverlayK7 : public OneHandleOverlayK7 {
public:
    float X = 0.0f; ///< fractions of the picture
    float Y = 0.0f;
    float Length = 0.0f; ///< fraction of the picture's width
    float Angle = 0.0f;  ///< degrees

protected:
    void DrawShape() override;
    void DragTo(float x, float y) override;
    void WriteValues() override;
};

/// A widget of two sizes: handle 1 drags both, handle 2 the width, handle 3 the height. A size is written if
/// its control object is linked, and stays within the displayed range of Link.Input[0].
class SizeOverlayK7 : public OverlayControlK7 {
public:
    float X = 0.0f; ///< fractions of the picture
    float Y = 0.0f;
    float Width = 0.0f;
    float Height = 0.0f;
    float Rotation = 0.0f; ///< degrees
    float HandleX[3] = {}; ///< pixels, of handles 1 to 3, as last drawn
    float HandleY[3] = {};

protected:
    void WriteValues() override;
    bool Concerns(int i) const override;
    bool HitsNumber(int handle, float x, float y) const;
    void SetHandle(int number, float x, float y);
    void DrawBox(int number) const;
};

/// Sizes are full axes as fractions of the picture's width.
class CircleOverlayK7 : public SizeOverlayK7 {
public:
    bool Circular = false; ///< one size: only handle 2 can be dragged
    bool Dashed = false;

protected:
    void DrawShape() override;
    int HandleAt(float x, float y) const override;
    void DragTo(float x, float y) override;
};

/// Sizes are fractions of the picture's width and height.
class RectangleOverlayK7 : public SizeOverlayK7 {
public:
    bool Square = false; ///< the height follows the width; handle 3 then has no box, but can be dragged

protected:
    void DrawShape() override;
    int HandleAt(float x, float y) const override;
    void DragTo(float x, float y) override;
};

} // namespace k7
