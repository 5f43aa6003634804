#include "view/NumberField.h"

#include "media/Words.h"

#include <QKeyEvent>
#include <QTimer>
#include <QWheelEvent>

#include <cmath>

namespace view {

QString NumberText(double value) {
    return QString::number(value, 'g', 6);
}

NumberField::NumberField(double step, bool whole, QWidget* parent)
    : QLineEdit(parent)
    , step_(step)
    , whole_(whole) {
    setFixedWidth(78);
    setAlignment(Qt::AlignRight);
    connect(this, &QLineEdit::editingFinished, this, &NumberField::Take);
}

void NumberField::Show(double value) {
    value_ = value;
    if (!isModified()) setText(NumberText(value));
}

void NumberField::Take() {
    if (!isModified()) return;
    setModified(false);
    const auto number = media::ParseNumber(media::Trimmed(text().toStdString()));
    if (number && !std::isnan(*number)) emit Entered(*number);
    setText(NumberText(value_));
}

void NumberField::StepBy(double steps, Qt::KeyboardModifiers modifiers) {
    double step = step_;
    if (modifiers & Qt::ControlModifier) step /= 10.0;
    if (modifiers & Qt::ShiftModifier) step *= 10.0;
    if (whole_) step = std::max(1.0, std::round(step));
    Take();
    // In whole steps, so that 0.1 three times is 0.3.
    emit Entered(std::round((value_ + steps * step) / step) * step);
}

void NumberField::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down)
        StepBy(event->key() == Qt::Key_Up ? 1.0 : -1.0, event->modifiers());
    else if (event->key() == Qt::Key_Escape) {
        setModified(false);
        Show(value_);
        clearFocus();
    } else
        QLineEdit::keyPressEvent(event);
}

void NumberField::wheelEvent(QWheelEvent* event) {
    if (!hasFocus()) return event->ignore();
    StepBy(event->angleDelta().y() > 0 ? 1.0 : -1.0, event->modifiers());
    event->accept();
}

void NumberField::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    QTimer::singleShot(0, this, &QLineEdit::selectAll);
}

} // namespace view
