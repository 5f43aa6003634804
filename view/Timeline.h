#pragma once

#include "media/FrameRange.h"

#include <QWidget>

#include <vector>

namespace view {

/// The frames of the clip: the one that is shown, those that are rendered, and those with keys.
class Timeline : public QWidget {
    Q_OBJECT

public:
    explicit Timeline(QWidget* parent = nullptr);

    void SetSpan(const media::FrameSpan& span);
    void Show(int frame, std::vector<int> rendered, std::vector<int> keys);
    QSize sizeHint() const override { return {400, 34}; }

signals:
    void FrameAsked(int frame);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;

private:
    double PlaceOf(double frame) const;
    void AskAt(double x);
    int NumberStep() const;

    media::FrameSpan span_;
    int frame_ = 0;
    std::vector<int> rendered_, keys_;
};

} // namespace view
