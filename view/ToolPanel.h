#pragma once

#include "view/ControlPanel.h"
#include "view/Histogram.h"

namespace view {

/// The right side of the window: histogram, name of the tool, its controls.
class ToolPanel : public QWidget {
    Q_OBJECT

public:
    explicit ToolPanel(QWidget* parent = nullptr);

    /// The look outlives this or is replaced; null: none.
    void SetLook(Look* look);
    void Refresh();
    ControlPanel& Controls() const { return *controls_; }
    Histogram& Counts() const { return *histogram_; }

private:
    Histogram* histogram_;
    QLabel *name_, *description_;
    ControlPanel* controls_;
    Look* look_ = nullptr;
    const host::Operator* tool_ = nullptr; ///< whose controls are shown
};

} // namespace view
