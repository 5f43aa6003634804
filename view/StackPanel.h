#pragma once

#include "view/Look.h"

#include <QCheckBox>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QToolButton>

namespace view {

/// The tools of the look, the first of which gets the clip: choose one, switch it off, move it, remove it,
/// add another.
class StackPanel : public QWidget {
    Q_OBJECT

public:
    explicit StackPanel(QWidget* parent = nullptr);

    /// The look outlives this or is replaced; null: none.
    void SetLook(Look* look);
    void Refresh();
    /// Opens the menu of tools to add.
    void OfferTools();

private:
    QToolButton* AddButton(const QString& text, const QString& tip);
    void FillMenu();
    void MakeRows();
    void AddRow(std::size_t layer);
    void ShowRow(std::size_t layer);

    Look* look_ = nullptr;
    QListWidget* list_;
    QMenu* tools_;
    QToolButton *add_, *up_, *down_, *remove_;

    struct Row {
        const host::Operator* tool;
        QCheckBox* on;
        QLabel *picture, *name;
    };
    std::vector<Row> rows_;
};

} // namespace view
