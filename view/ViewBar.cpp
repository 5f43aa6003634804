#include "view/ViewBar.h"

#include "view/NumberField.h"

#include <algorithm>

namespace view {

ViewBar::ViewBar(QWidget* parent)
    : QToolBar(parent)
    , channels_(new QComboBox(this))
    , zoom_(new QLabel(this)) {
    setMovable(false);
    setWindowTitle(tr("View"));
    setObjectName("ViewBar");
    channels_->addItems(
        {tr("Colour"), tr("Red"), tr("Green"), tr("Blue"), tr("Alpha"), tr("Luminance"), tr("Over checks")});
    channels_->setToolTip(tr("Channels that are shown (C, R, G, B, A, L)"));
    channels_->setAccessibleName(tr("Channels"));
    channels_->setFocusPolicy(Qt::TabFocus);
    addWidget(channels_);
    exposure_ = AddNumber(tr("Exposure"), tr("Exposure of the view, in stops"), 0.25);
    gamma_ = AddNumber(tr("Gamma"), tr("Gamma of the view"), 0.1);
    addSeparator();
    zoom_->setMinimumWidth(56);
    zoom_->setAlignment(Qt::AlignCenter);
    zoom_->setToolTip(tr("Pixels of the screen for each pixel of the picture"));
    addWidget(zoom_);
    connect(channels_, &QComboBox::activated, this, [this](int entry) {
        showing_.channels = static_cast<Channels>(entry);
        emit ShowingChosen(showing_);
    });
    connect(exposure_, &NumberField::Entered, this, [this](double stops) {
        showing_.exposure = std::clamp(stops, -20.0, 20.0);
        emit ShowingChosen(showing_);
    });
    connect(gamma_, &NumberField::Entered, this, [this](double gamma) {
        showing_.gamma = std::clamp(gamma, 0.1, 10.0);
        emit ShowingChosen(showing_);
    });
    Show(showing_);
}

NumberField* ViewBar::AddNumber(const QString& label, const QString& tip, double step) {
    auto* text = new QLabel(label, this);
    text->setContentsMargins(12, 0, 6, 0);
    addWidget(text);
    auto* field = new NumberField(step, false, this);
    field->setFixedWidth(52);
    field->setToolTip(tip);
    field->setAccessibleName(label);
    field->setFocusPolicy(Qt::ClickFocus);
    addWidget(field);
    return field;
}

void ViewBar::Show(const Showing& showing) {
    showing_ = showing;
    channels_->setCurrentIndex(static_cast<int>(showing.channels));
    exposure_->Show(showing.exposure);
    gamma_->Show(showing.gamma);
}

void ViewBar::ShowZoom(double zoom) {
    zoom_->setText(QString("%1 %").arg(zoom * 100.0, 0, 'f', zoom < 0.1 ? 1 : 0));
}

} // namespace view
