#pragma once

#include "app/OffscreenGL.h"
#include "host/Image.h"
#include "host/Operator.h"
#include "host/Preview.h"

#include <memory>
#include <vector>

namespace app {

/// Width and height in pixels.
struct ViewSize {
    int width = 0, height = 0;
};

/// A place as fractions of the picture; y grows upward.
struct Spot {
    double x = 0, y = 0;
};

/// A compositor's view without a window: it shows a tool's picture as large as fits, with the tool's widgets
/// over it, and has a pointer that can be dragged.
class PreviewView : public host::PreviewInfo {
public:
    PreviewView(host::Operator& op, ViewSize size);

    /// The size in which a picture's pixels are shown one to one, the longer side of non-square ones widened.
    static ViewSize NaturalSize(const host::Image& picture);

    /// Shows a picture with the widgets as they are now.
    void Show(const host::Image& picture);

    /// Presses at one place, moves to another and releases. False if there was nothing to drag.
    bool Drag(const Spot& from, const Spot& to);

    /// The view's pixels, opaque.
    std::shared_ptr<host::Image> Snapshot() const;

    double TransformXOut(double x) const override { return left_ + x * DisplayWidth; }
    double TransformYOut(double y) const override { return bottom_ + y * DisplayHeight; }
    void Color4ub(int red, int green, int blue, int alpha) override;

private:
    void FitTo(const host::Image& picture);
    void DrawPicture(const host::Image& picture) const;
    void PointTo(const Spot& spot);

    host::Operator& operator_;
    const ViewSize size_;
    OffscreenGL gl_;
    host::Ref<host::OperatorControl> control_; ///< null if the tool has no widgets
    int left_ = 0, bottom_ = 0;                ///< corner of the picture in the view
};

} // namespace app
