#include "view/Tick.h"

#include <QPainter>

namespace view {

void Tick::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette::ColorGroup group = isEnabled() ? QPalette::Active : QPalette::Disabled;
    const QRectF box(1.5, (height() - 15) / 2.0, 15.0, 15.0);
    const QColor accent = palette().color(QPalette::Highlight);
    QColor outline = palette().color(group, QPalette::WindowText);
    outline.setAlphaF(0.55f);
    painter.setPen(QPen(hasFocus() ? accent : outline, hasFocus() ? 2.0 : 1.0));
    painter.setBrush(isChecked() && isEnabled() ? accent : palette().color(QPalette::Base));
    painter.drawRoundedRect(box, 3.0, 3.0);
    if (!isChecked()) return;
    const QPointF tick[] = {box.topLeft() + QPointF(3.5, 7.5), box.topLeft() + QPointF(6.5, 10.5),
                            box.topLeft() + QPointF(11.5, 4.5)};
    painter.setPen(QPen(isEnabled() ? palette().color(QPalette::HighlightedText) : outline, 2.0));
    painter.drawPolyline(tick, 3);
}

} // namespace view
