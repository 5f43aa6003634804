#pragma once

#include <QLineEdit>

namespace view {

/// A field for a number: any that can be typed. The arrow keys and the wheel change it by a step, with Ctrl
/// by a tenth of it, with Shift by ten.
class NumberField : public QLineEdit {
    Q_OBJECT

public:
    NumberField(double step, bool whole, QWidget* parent = nullptr);

    /// Shows a value, unless the user is typing one.
    void Show(double value);
    double Value() const { return value_; }

signals:
    void Entered(double value);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private:
    void Take();
    void StepBy(double steps, Qt::KeyboardModifiers modifiers);

    const double step_;
    const bool whole_;
    double value_ = 0.0;
};

/// As short as it can be read: at most six digits that count.
QString NumberText(double value);

} // namespace view
