#include "view/ValueSlider.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace view {

namespace {

constexpr double kKnob = 5.0; ///< radius

} // namespace

ValueSlider::ValueSlider(double low, double high, bool whole, QWidget* parent)
    : QWidget(parent)
    , low_(low)
    , high_(high > low ? high : low + 1.0)
    , whole_(whole) {
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ValueSlider::Show(double value) {
    value_ = value;
    update();
}

double ValueSlider::Part() const {
    const double part = (value_ - low_) / (high_ - low_);
    return part >= 0.0 ? std::min(part, 1.0) : 0.0; // NaN too
}

double ValueSlider::Travel() const {
    return std::max(1.0, width() - 2.0 * kKnob - 2.0);
}

void ValueSlider::MoveTo(double value) {
    raw_ = std::clamp(value, low_, high_);
    // Steps that one can read: about a thousandth of the range.
    const double step = whole_ ? 1.0 : std::pow(10.0, std::floor(std::log10((high_ - low_) / 500.0)));
    const double taken = dragging_ && !whole_ && step > 0.0 ? std::round(raw_ / step) * step : raw_;
    emit Moved(whole_ ? std::round(taken) : taken);
}

void ValueSlider::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette::ColorGroup group = isEnabled() ? QPalette::Active : QPalette::Disabled;
    const double middle = height() / 2.0, x = 1.0 + kKnob + Part() * Travel();
    QColor groove = palette().color(group, QPalette::WindowText);
    groove.setAlphaF(0.22f);
    const QColor filled = isEnabled() ? palette().color(group, QPalette::Highlight) : groove;
    painter.setPen(Qt::NoPen);
    painter.setBrush(groove);
    painter.drawRoundedRect(QRectF(1.0 + kKnob, middle - 1.5, Travel(), 3.0), 1.5, 1.5);
    painter.setBrush(filled);
    painter.drawRoundedRect(QRectF(1.0 + kKnob, middle - 1.5, Part() * Travel(), 3.0), 1.5, 1.5);
    painter.setBrush(palette().color(group, isEnabled() ? QPalette::WindowText : QPalette::Mid));
    if (hasFocus()) painter.setPen(QPen(palette().color(QPalette::Highlight), 2.0));
    painter.drawEllipse(QPointF(x, middle), kKnob, kKnob);
}

void ValueSlider::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    emit Began();
    dragging_ = true;
    lastX_ = event->position().x();
    raw_ = value_;
    const double x = 1.0 + kKnob + Part() * Travel();
    if (std::abs(lastX_ - x) > kKnob + 2.0) MoveTo(low_ + (lastX_ - 1.0 - kKnob) / Travel() * (high_ - low_));
}

void ValueSlider::mouseMoveEvent(QMouseEvent* event) {
    if (!dragging_) return;
    const double way = event->position().x() - lastX_;
    const double fine = event->modifiers() & Qt::ControlModifier ? 0.1 : 1.0;
    lastX_ = event->position().x();
    MoveTo(raw_ + way * fine / Travel() * (high_ - low_));
}

void ValueSlider::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !dragging_) return;
    dragging_ = false;
    emit Ended();
}

void ValueSlider::mouseDoubleClickEvent(QMouseEvent*) {
    emit ResetAsked();
}

/// The arrow keys belong to the slider that has the focus, and not to the menus.
bool ValueSlider::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Left || key == Qt::Key_Right) event->accept();
    }
    return QWidget::event(event);
}

void ValueSlider::keyPressEvent(QKeyEvent* event) {
    const bool up = event->key() == Qt::Key_Right || event->key() == Qt::Key_Up;
    if (!up && event->key() != Qt::Key_Left && event->key() != Qt::Key_Down)
        return QWidget::keyPressEvent(event);
    const double share = event->modifiers() & Qt::ControlModifier ? 1000.0 : 100.0;
    const double step = whole_ ? 1.0 : (high_ - low_) / share;
    emit Began();
    MoveTo(value_ + (up ? step : -step));
    emit Ended();
}

} // namespace view
