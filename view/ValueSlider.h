#pragma once

#include <QWidget>

namespace view {

/// A slider over a range of real numbers, which can show a value beyond it at its end. A drag with Ctrl moves
/// it ten times finer; a double click asks for the default.
class ValueSlider : public QWidget {
    Q_OBJECT

public:
    ValueSlider(double low, double high, bool whole, QWidget* parent = nullptr);

    void Show(double value);
    QSize sizeHint() const override { return {120, 22}; }

signals:
    void Began();
    void Moved(double value);
    void Ended();
    void ResetAsked();

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    double Part() const;   ///< 0 to 1 along the slider
    double Travel() const; ///< pixels from end to end
    void MoveTo(double value);

    const double low_, high_;
    const bool whole_;
    double value_ = 0.0;
    double raw_ = 0.0; ///< of a drag, not rounded
    double lastX_ = 0.0;
    bool dragging_ = false;
};

} // namespace view
