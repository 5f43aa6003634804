#include "view/ControlRow.h"

#include "host/Tags.h"
#include "media/Settings.h"
#include "media/Words.h"
#include "view/Command.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QMenu>

#include <algorithm>

namespace view {

namespace {

constexpr int kLabelWidth = 128;

} // namespace

ControlRow::ControlRow(Look& look, host::Input& input, QWidget* parent)
    : QWidget(parent)
    , look_(look)
    , input_(input)
    , label_(new QLabel(Title(), this))
    , line_(new QHBoxLayout(this)) {
    line_->setContentsMargins(0, 0, 0, 0);
    line_->setSpacing(8);
    label_->setFixedWidth(kLabelWidth);
    label_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    label_->setToolTip(tr("%1 (%2)\nRight click: reset, keys, copy and paste")
                           .arg(Title(), QString::fromStdString(media::KeyOf(input_))));
    line_->addWidget(label_);
    setMinimumHeight(26);
    setContextMenuPolicy(Qt::CustomContextMenu);
    connect(this, &QWidget::customContextMenuRequested, this, [this](const QPoint& at) {
        QMenu menu(this);
        FillMenu(menu);
        menu.exec(mapToGlobal(at));
    });
}

QString ControlRow::Title() const {
    const std::string name = media::Trimmed(input_.Name());
    if (!input_.HasAttr(host::kTagColourChannel)) return QString::fromStdString(name);
    // The channels of a colour share a label, which may be empty.
    const QString channels[] = {tr("red"), tr("green"), tr("blue")};
    const auto channel = static_cast<std::size_t>(input_.GetAttrI(host::kTagColourChannel));
    const QString colour = QString::fromStdString(media::Trimmed(input_.GetAttrS(host::kTagColourLabel)));
    return (colour.isEmpty() ? tr("Colour") : colour) + " " + channels[std::min<std::size_t>(channel, 2)];
}

void ControlRow::Describe(QWidget& part) const {
    part.setAccessibleName(Title());
    part.setToolTip(label_->toolTip());
}

bool ControlRow::Keyable() const {
    const host::Input::Type type = input_.DataType();
    return type == host::Input::Type::Number || type == host::Input::Type::Point;
}

bool ControlRow::IsChanged() const {
    if (Keyable()) return !IsDefault(input_);
    return look_.TextOf(input_) != input_.GetAttrS(host::kTagDefaultText);
}

void ControlRow::Refresh() {
    setVisible(input_.GetAttrI(host::kTagShown, 1) != 0);
    setEnabled(input_.GetAttrI(host::kTagDisabled) == 0);
    const host::Curve curve = Keyable() ? input_.GetCurve() : host::Curve();
    const bool key = curve.Keys.count(look_.Frame()) != 0;
    label_->setText((key ? "\u25C6 " : curve.Animated() ? "\u25C7 " : "") + Title());
    QFont font = label_->font();
    font.setBold(IsChanged());
    label_->setFont(font);
    ShowValue();
}

void ControlRow::BeginStep() {
    look_.Begin(Title().toStdString());
}

void ControlRow::Set(const host::Curve::Value& value) {
    BeginStep();
    Write(value);
    EndStep();
}

void ControlRow::SetCurve(const QString& title, const host::Curve& curve) {
    look_.Do(title.arg(Title()).toStdString(), [&] { input_.SetCurve(curve); });
}

void ControlRow::Reset() {
    if (Keyable()) return SetCurve(tr("Reset %1"), host::Curve{DefaultOf(input_), {}});
    look_.Do(tr("Reset %1").arg(Title()).toStdString(),
             [&] { look_.WriteText(input_, input_.GetAttrS(host::kTagDefaultText)); });
}

void ControlRow::SetKey() {
    host::Curve curve = input_.GetCurve();
    curve.Keys[look_.Frame()] = look_.ValueOf(input_);
    SetCurve(tr("Key of %1"), curve);
}

void ControlRow::RemoveKey() {
    host::Curve curve = input_.GetCurve();
    if (curve.Keys.size() == 1) curve.Constant = look_.ValueOf(input_);
    curve.Keys.erase(look_.Frame());
    SetCurve(tr("Remove key of %1"), curve);
}

void ControlRow::Copy() {
    const std::string text = Keyable() ? CurveText(input_, input_.GetCurve()) : look_.TextOf(input_);
    QApplication::clipboard()->setText(QString::fromStdString(text));
}

void ControlRow::Paste() {
    const std::string text = QApplication::clipboard()->text().toStdString();
    if (!Keyable()) return look_.Do(Title().toStdString(), [&] { look_.WriteText(input_, text); });
    try {
        SetCurve(tr("Paste %1"), media::ParseCurve(input_, media::Trimmed(text)));
    } catch (const std::exception&) {
        QApplication::beep(); // is no value of this control
    }
}

void ControlRow::FillMenu(QMenu& menu) {
    menu.addAction(tr("Reset"), this, &ControlRow::Reset)->setEnabled(IsChanged());
    menu.addSeparator();
    menu.addAction(tr("Set key"), this, &ControlRow::SetKey)->setEnabled(Keyable());
    menu.addAction(tr("Remove key"), this, &ControlRow::RemoveKey)
        ->setEnabled(Keyable() && input_.GetCurve().Keys.count(look_.Frame()) != 0);
    menu.addSeparator();
    menu.addAction(tr("Copy value"), this, &ControlRow::Copy);
    menu.addAction(tr("Paste value"), this, &ControlRow::Paste);
}

} // namespace view
