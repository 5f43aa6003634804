#include "view/Placement.h"

#include <algorithm>
#include <cmath>

namespace view {

namespace {

constexpr double kMargin = 24.0; ///< pixels around a fitted picture
constexpr double kLeastZoom = 1.0 / 64.0, kMostZoom = 64.0;

} // namespace

void Placement::SetSizes(const QSizeF& picture, const QSizeF& view) {
    if (picture_ == picture && view_ == view) return;
    const QSizeF growth = view - view_;
    picture_ = picture;
    view_ = view;
    if (fitted_)
        Fit();
    else
        Pan({growth.width() / 2, growth.height() / 2});
}

void Placement::Fit() {
    const double wide = std::max(1.0, view_.width() - kMargin) / picture_.width();
    const double high = std::max(1.0, view_.height() - kMargin) / picture_.height();
    zoom_ = std::clamp(std::min(wide, high), kLeastZoom, kMostZoom);
    const QSizeF rest = view_ - Shown();
    corner_ = {std::round(rest.width() / 2), std::round(rest.height() / 2)};
    fitted_ = true;
}

void Placement::ZoomTo(double zoom, const QPointF& fixed) {
    zoom = std::clamp(zoom, kLeastZoom, kMostZoom);
    corner_ = fixed - (fixed - corner_) * (zoom / zoom_);
    if (zoom == std::round(zoom)) corner_ = {std::round(corner_.x()), std::round(corner_.y())};
    zoom_ = zoom;
    fitted_ = false;
}

void Placement::Pan(const QPointF& way) {
    corner_ += way;
    fitted_ = false;
}

QPointF Placement::ToPicture(const QPointF& place) const {
    const QSizeF shown = Shown();
    return {(place.x() - corner_.x()) / shown.width(), 1.0 - (place.y() - corner_.y()) / shown.height()};
}

QPointF Placement::ToView(const QPointF& fractions) const {
    const QSizeF shown = Shown();
    return {corner_.x() + fractions.x() * shown.width(),
            corner_.y() + (1.0 - fractions.y()) * shown.height()};
}

} // namespace view
