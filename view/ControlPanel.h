#pragma once

#include "view/ControlRow.h"

#include <QTabWidget>

namespace view {

/// The controls of a tool, by its pages.
class ControlPanel : public QTabWidget {
    Q_OBJECT

public:
    explicit ControlPanel(QWidget* parent = nullptr);

    /// Shows the controls of the chosen tool, until another is chosen; null: none.
    void SetLook(Look* look);
    void Refresh();

private:
    QWidget* AddPage(const QString& title);

    std::vector<ControlRow*> rows_;
};

} // namespace view
