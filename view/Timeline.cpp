#include "view/Timeline.h"

#include <QMouseEvent>
#include <QPainter>

#include <cmath>

namespace view {

namespace {

constexpr double kEdge = 14.0, kBarTop = 26.0;

} // namespace

Timeline::Timeline(QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleName(tr("Frames"));
    setToolTip(tr("Frames of the clip. Coloured: rendered. Diamonds: keys."));
}

void Timeline::SetSpan(const media::FrameSpan& span) {
    span_ = span;
    update();
}

void Timeline::Show(int frame, std::vector<int> rendered, std::vector<int> keys) {
    frame_ = frame;
    rendered_ = std::move(rendered);
    keys_ = std::move(keys);
    update();
}

double Timeline::PlaceOf(double frame) const {
    const double count = std::max(1, span_.last - span_.first);
    return kEdge + (frame - span_.first) / count * (width() - 2.0 * kEdge);
}

/// Frames from number to number, so that they do not touch.
int Timeline::NumberStep() const {
    const double frames = std::max(1, span_.last - span_.first);
    const double most = std::max(1.0, (width() - 2.0 * kEdge) / 44.0);
    for (const int step : {1, 2, 5, 10, 20, 50, 100, 200, 500, 1000, 2000, 5000})
        if (frames / step <= most) return step;
    return 10000;
}

void Timeline::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.85);
    painter.setFont(small);
    const QColor ink = palette().color(QPalette::WindowText);
    QColor faint = ink, groove = ink;
    faint.setAlphaF(0.6f);
    groove.setAlphaF(0.22f);
    const QColor accent = palette().color(QPalette::Highlight);

    painter.setPen(Qt::NoPen);
    painter.setBrush(groove);
    painter.drawRoundedRect(QRectF(kEdge, kBarTop, width() - 2.0 * kEdge, 4.0), 2.0, 2.0);
    painter.setBrush(accent);
    for (const int frame : rendered_) {
        const double left = std::max(kEdge, PlaceOf(frame - 0.5));
        painter.drawRect(QRectF(left, kBarTop, std::min(width() - kEdge, PlaceOf(frame + 0.5)) - left, 4.0));
    }
    painter.setPen(faint);
    const int step = NumberStep();
    for (int frame = span_.first; frame <= span_.last; ++frame)
        if (frame % step == 0 && std::abs(PlaceOf(frame) - PlaceOf(frame_)) > 22.0)
            painter.drawText(QRectF(PlaceOf(frame) - 30.0, 4.0, 60.0, 16.0), Qt::AlignCenter,
                             QString::number(frame));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(235, 175, 60));
    for (const int frame : keys_) {
        const QPointF at(PlaceOf(frame), kBarTop + 2.0);
        const QPointF corners[] = {at + QPointF(0, -5), at + QPointF(5, 0), at + QPointF(0, 5),
                                   at + QPointF(-5, 0)};
        painter.drawPolygon(corners, 4);
    }
    painter.setBrush(accent);
    painter.drawRoundedRect(QRectF(PlaceOf(frame_) - 14.0, 3.0, 28.0, 17.0), 3.0, 3.0);
    painter.drawRect(QRectF(PlaceOf(frame_) - 1.0, 20.0, 2.0, 12.0));
    painter.setPen(palette().color(QPalette::HighlightedText));
    painter.drawText(QRectF(PlaceOf(frame_) - 30.0, 3.0, 60.0, 17.0), Qt::AlignCenter,
                     QString::number(frame_));
}

void Timeline::AskAt(double x) {
    const double count = span_.last - span_.first;
    const double part = (x - kEdge) / std::max(1.0, width() - 2.0 * kEdge);
    emit FrameAsked(span_.first + static_cast<int>(std::lround(std::clamp(part, 0.0, 1.0) * count)));
}

void Timeline::mousePressEvent(QMouseEvent* event) {
    AskAt(event->position().x());
}

void Timeline::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton) AskAt(event->position().x());
}

} // namespace view
