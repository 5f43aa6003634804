#include "view/ControlPanel.h"

#include "host/Tags.h"
#include "media/PlugIns.h"

#include <QScrollArea>
#include <QVBoxLayout>

#include <map>

namespace view {

ControlPanel::ControlPanel(QWidget* parent) : QTabWidget(parent) {
    setDocumentMode(true);
    setUsesScrollButtons(true);
}

QWidget* ControlPanel::AddPage(const QString& title) {
    auto* page = new QWidget;
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(4, 10, 12, 10);
    column->setSpacing(3);
    column->setAlignment(Qt::AlignTop);
    auto* scroll = new QScrollArea(this);
    scroll->setWidget(page);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    addTab(scroll, title);
    return page;
}

void ControlPanel::SetLook(Look* look) {
    rows_.clear();
    while (count()) delete widget(0);
    if (!look) return;
    std::map<std::int64_t, QWidget*> pages;
    const std::vector<std::string>& titles = look->Op().Pages();
    for (host::Input* input : look->Op().Inputs()) {
        ControlRow* row = MakeControlRow(*look, *input, nullptr);
        if (!row) continue;
        const std::int64_t number = input->GetAttrI(host::kTagPage);
        QWidget*& page = pages[number];
        if (!page) page = AddPage(QString::fromStdString(titles.at(static_cast<std::size_t>(number))));
        page->layout()->addWidget(row);
        rows_.push_back(row);
    }
    Refresh();
}

void ControlPanel::Refresh() {
    for (ControlRow* row : rows_) row->Refresh();
}

} // namespace view
