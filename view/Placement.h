#pragma once

#include <QPointF>
#include <QSizeF>

namespace view {

/// Where a picture lies in a view: all lengths are pixels of the screen, y grows downwards.
class Placement {
public:
    /// Size of the picture with square pixels, and of the view.
    void SetSizes(const QSizeF& picture, const QSizeF& view);

    void Fit();                                     ///< all of the picture, and again when sizes change
    void ZoomTo(double zoom, const QPointF& fixed); ///< a point of the view keeps its place in the picture
    void ZoomBy(double factor, const QPointF& fixed) { ZoomTo(zoom_ * factor, fixed); }
    void Pan(const QPointF& way);

    double Zoom() const { return zoom_; } ///< screen pixels of a picture's pixel
    bool Fitted() const { return fitted_; }
    QPointF Corner() const { return corner_; } ///< top left
    QSizeF Shown() const { return picture_ * zoom_; }

    /// Fractions of the picture, y upwards, of a point of the view, and back.
    QPointF ToPicture(const QPointF& place) const;
    QPointF ToView(const QPointF& fractions) const;

private:
    QSizeF picture_{1, 1}, view_{1, 1};
    QPointF corner_;
    double zoom_ = 1.0;
    bool fitted_ = true;
};

} // namespace view
