#pragma once

#include "view/ControlPanel.h"
#include "view/Histogram.h"

namespace view {

/// The right side of the window: histogram, name of the tool, its controls.
class ToolPanel : public QWidget {
    Q_OBJECT

public:
    explicit ToolPanel(QWidget* parent = nullptr);

    void SetLook(Look* look);
    ControlPanel& Controls() const { return *controls_; }
    Histogram& Counts() const { return *histogram_; }

private:
    Histogram* histogram_;
    QLabel *name_, *description_;
    ControlPanel* controls_;
};

} // namespace view
