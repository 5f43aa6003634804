#pragma once

#include "host/Operator.h"
#include "host/Preview.h"
#include "view/Placement.h"

namespace view {

/// The tool's own widgets over its picture: drawn by the tool, moved by the pointer. All operations but
/// Place need the view's OpenGL context.
class Handles : public host::PreviewInfo {
public:
    /// The operator outlives this object; one without widgets is welcome too.
    explicit Handles(host::Operator& op);

    /// Where the picture lies now in a view of a height.
    void Place(const host::Image& picture, const Placement& placement, double viewHeight);
    void Draw(double lineWidth);

    // Places are fractions of the picture, y upwards.
    /// The input that would be moved from there; null if none.
    host::Input* At(const QPointF& place);
    /// True where a drag has begun.
    bool Press(const QPointF& place);
    void Move(const QPointF& place);
    void Release(const QPointF& place);

    double TransformXOut(double x) const override { return left_ + x * DisplayWidth; }
    double TransformYOut(double y) const override { return bottom_ + y * DisplayHeight; }
    void Color4ub(int red, int green, int blue, int alpha) override;

private:
    host::Ref<host::Point> PointTo(const QPointF& place);

    host::Operator& operator_;
    host::Ref<host::OperatorControl> control_; ///< null where the tool has no widgets
    double left_ = 0.0, bottom_ = 0.0;
};

} // namespace view
