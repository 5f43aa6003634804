#pragma once

#include <QCheckBox>

namespace view {

/// A check box with an outline that is seen on dark windows too.
class Tick : public QCheckBox {
    Q_OBJECT

public:
    using QCheckBox::QCheckBox;
    QSize sizeHint() const override { return {18, 20}; }

protected:
    void paintEvent(QPaintEvent* event) override;
};

} // namespace view
