#include "view/ToolPanel.h"

#include "media/PlugIns.h"
#include "view/ToolPicture.h"

#include <QVBoxLayout>

namespace view {

ToolPanel::ToolPanel(QWidget* parent)
    : QWidget(parent)
    , histogram_(new Histogram(this))
    , name_(new QLabel(this))
    , description_(new QLabel(this))
    , controls_(new ControlPanel(this)) {
    setMinimumWidth(340);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 4, 0, 0);
    column->setSpacing(0);
    QFont large = name_->font();
    large.setPointSizeF(large.pointSizeF() * 1.35);
    large.setBold(true);
    name_->setFont(large);
    name_->setContentsMargins(12, 10, 12, 0);
    description_->setWordWrap(true);
    description_->setContentsMargins(12, 2, 12, 10);
    description_->setForegroundRole(QPalette::WindowText);
    column->addWidget(histogram_);
    column->addWidget(name_);
    column->addWidget(description_);
    column->addWidget(controls_, 1);
}

void ToolPanel::SetLook(Look* look) {
    look_ = look;
    tool_ = nullptr;
    controls_->SetLook(nullptr);
    if (look) Refresh();
}

void ToolPanel::Refresh() {
    if (tool_ == &look_->Op()) return controls_->Refresh();
    tool_ = &look_->Op();
    name_->setText(QString::fromStdString(media::PlainName(*tool_->Class())));
    description_->setText(DescriptionOf(*tool_->Class()));
    controls_->SetLook(look_);
}

} // namespace view
