#include "view/StackPanel.h"

#include "media/PlugIns.h"
#include "view/Gallery.h"
#include "view/Tick.h"
#include "view/ToolPicture.h"

#include <QHBoxLayout>
#include <QVBoxLayout>
#include <QWidgetAction>

#include <algorithm>

namespace view {

namespace {

constexpr QSize kPicture{48, 27};
constexpr int kRowHeight = 34;
constexpr int kColumns = 4; ///< of the menu

} // namespace

StackPanel::StackPanel(QWidget* parent)
    : QWidget(parent)
    , list_(new QListWidget(this))
    , tools_(new QMenu(this)) {
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(2);
    auto* title = new QLabel(tr("Stack"), this);
    buttons->addWidget(title, 1);
    add_ = AddButton("+", tr("Add a tool below the chosen one (Ins)"));
    up_ = AddButton("\u2191", tr("Move the chosen tool up (Ctrl+Up)"));
    down_ = AddButton("\u2193", tr("Move the chosen tool down (Ctrl+Down)"));
    remove_ = AddButton("\u2715", tr("Remove the chosen tool (Ctrl+Del)"));
    for (QToolButton* button : {add_, up_, down_, remove_}) buttons->addWidget(button);
    add_->setMenu(tools_);
    add_->setPopupMode(QToolButton::InstantPopup);
    FillMenu();

    list_->setFrameShape(QFrame::NoFrame);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setAccessibleName(tr("Stack of tools"));
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(4);
    buttons->setContentsMargins(10, 4, 4, 0);
    column->addLayout(buttons);
    column->addWidget(list_);

    connect(up_, &QToolButton::clicked, this, [this] { look_->Move(-1); });
    connect(down_, &QToolButton::clicked, this, [this] { look_->Move(1); });
    connect(remove_, &QToolButton::clicked, this, [this] { look_->Remove(); });
    connect(list_, &QListWidget::currentRowChanged, this, [this](int row) {
        if (look_ && row >= 0) look_->Choose(static_cast<std::size_t>(row));
    });
}

QToolButton* StackPanel::AddButton(const QString& text, const QString& tip) {
    auto* button = new QToolButton(this);
    button->setText(text);
    button->setToolTip(tip);
    button->setAccessibleName(tip);
    button->setAutoRaise(true);
    button->setFixedSize(26, 24);
    button->setStyleSheet("QToolButton::menu-indicator { image: none; }");
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

void StackPanel::FillMenu() {
    auto* gallery = new Gallery(kColumns, tools_);
    const int rows = (gallery->count() + kColumns - 1) / kColumns;
    gallery->setFixedHeight(rows * gallery->gridSize().height() + 12);
    auto* entry = new QWidgetAction(tools_);
    entry->setDefaultWidget(gallery);
    tools_->addAction(entry);
    connect(tools_, &QMenu::aboutToShow, gallery, [gallery] { gallery->setFocus(); });
    connect(gallery, &Gallery::Chosen, this, [this](host::Registry* tool) {
        tools_->close();
        look_->Add(*tool);
    });
}

void StackPanel::OfferTools() {
    tools_->popup(add_->mapToGlobal(add_->rect().bottomLeft()));
}

void StackPanel::AddRow(std::size_t layer) {
    const host::Operator& tool = *look_->Layers()[layer].op;
    const QString title = QString::fromStdString(media::PlainName(*tool.Class()));
    auto* row = new QWidget(list_);
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(10, 0, 4, 0);
    line->setSpacing(6);
    auto* on = new Tick(row);
    on->setToolTip(tr("Switches %1 on or off (X)").arg(title));
    on->setAccessibleName(tr("%1 is on").arg(title));
    connect(on, &Tick::clicked, this, [this, layer](bool isOn) { look_->SwitchOn(layer, isOn); });
    rows_.push_back({&tool, on, new QLabel(row), new QLabel(title, row)});
    line->addWidget(on);
    line->addWidget(rows_.back().picture);
    line->addWidget(rows_.back().name, 1);
    auto* item = new QListWidgetItem(list_);
    item->setSizeHint({0, kRowHeight});
    item->setData(Qt::AccessibleTextRole, title);
    list_->setItemWidget(item, row);
}

void StackPanel::ShowRow(std::size_t layer) {
    const Layer& shown = look_->Layers()[layer];
    const Row& row = rows_[layer];
    row.name->setForegroundRole(layer == look_->Chosen() ? QPalette::HighlightedText : QPalette::Text);
    if (row.on->isChecked() == shown.on && row.picture->isEnabled() == shown.on) return;
    row.on->setChecked(shown.on);
    row.name->setEnabled(shown.on);
    row.picture->setEnabled(shown.on);
    row.picture->setPixmap(
        PictureOf(*shown.op->Class()).pixmap(kPicture, shown.on ? QIcon::Normal : QIcon::Disabled));
}

void StackPanel::MakeRows() {
    list_->clear();
    rows_.clear();
    for (std::size_t i = 0; i < look_->Layers().size(); ++i) AddRow(i);
    list_->setFixedHeight(std::clamp(static_cast<int>(rows_.size()), 2, 5) * kRowHeight + 2);
}

void StackPanel::SetLook(Look* look) {
    look_ = look;
    rows_.clear();
    if (look) Refresh();
}

void StackPanel::Refresh() {
    const std::vector<Layer>& layers = look_->Layers();
    const QSignalBlocker quiet(list_);
    if (!std::equal(layers.begin(), layers.end(), rows_.begin(), rows_.end(),
                    [](const Layer& layer, const Row& row) { return layer.op.get() == row.tool; }))
        MakeRows();
    for (std::size_t i = 0; i < rows_.size(); ++i) ShowRow(i);
    const std::size_t chosen = look_->Chosen();
    list_->setCurrentRow(static_cast<int>(chosen));
    up_->setEnabled(chosen > 0);
    down_->setEnabled(chosen + 1 < rows_.size());
    remove_->setEnabled(rows_.size() > 1);
}

} // namespace view
