#include "host/Tags.h"
#include "media/Words.h"
#include "view/ControlRow.h"
#include "view/NumberField.h"
#include "view/Sequence.h"
#include "view/Tick.h"
#include "view/ValueSlider.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDragEnterEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QMimeData>
#include <QPushButton>
#include <QSettings>
#include <QToolButton>
#include <QWheelEvent>

#include <algorithm>

namespace view {

using host::Input;

namespace {

bool IsWhole(const Input& input) {
    return input.GetAttrI(host::kTagInteger) != 0;
}

double StepOf(const Input& input) {
    if (IsWhole(input)) return 1.0;
    const double range = input.GetAttrD(host::kTagShownHigh) - input.GetAttrD(host::kTagShownLow);
    return range > 0.0 && range <= 5.0 ? 0.01 : range > 50.0 ? 1.0 : 0.1;
}

class NumberRow : public ControlRow {
public:
    NumberRow(Look& look, Input& input, QWidget* parent)
        : ControlRow(look, input, parent)
        , field_(new NumberField(StepOf(input), IsWhole(input), this)) {
        const bool shown = input.HasAttr(host::kTagShownHigh);
        const bool limited = input.HasAttr(host::kTagLowest) && input.HasAttr(host::kTagHighest);
        slider_ = new ValueSlider(input.GetAttrD(shown || !limited ? host::kTagShownLow : host::kTagLowest),
                                  shown     ? input.GetAttrD(host::kTagShownHigh)
                                  : limited ? input.GetAttrD(host::kTagHighest)
                                            : 1.0,
                                  IsWhole(input), this);
        Describe(*slider_);
        Describe(*field_);
        Line().addWidget(slider_);
        Line().addWidget(field_);
        connect(slider_, &ValueSlider::Began, this, &NumberRow::BeginStep);
        connect(slider_, &ValueSlider::Moved, this, [this](double value) { Write({value, 0.0}); });
        connect(slider_, &ValueSlider::Ended, this, &NumberRow::EndStep);
        connect(slider_, &ValueSlider::ResetAsked, this, &NumberRow::Reset);
        connect(field_, &NumberField::Entered, this, [this](double value) { Set({value, 0.0}); });
    }

protected:
    void ShowValue() override {
        const double value = look_.ValueOf(input_).x;
        slider_->Show(value);
        field_->Show(value);
    }

private:
    ValueSlider* slider_;
    NumberField* field_;
};

class PointRow : public ControlRow {
public:
    PointRow(Look& look, Input& input, QWidget* parent)
        : ControlRow(look, input, parent)
        , x_(new NumberField(0.01, false, this))
        , y_(new NumberField(0.01, false, this)) {
        Line().addStretch();
        for (NumberField* field : {x_, y_}) {
            Describe(*field);
            field->setAccessibleName(Title() + (field == x_ ? " X" : " Y"));
            Line().addWidget(field);
            connect(field, &NumberField::Entered, this, [this, field](double value) {
                const host::Curve::Value now = look_.ValueOf(input_);
                Set(field == x_ ? host::Curve::Value{value, now.y} : host::Curve::Value{now.x, value});
            });
        }
    }

protected:
    void ShowValue() override {
        x_->Show(look_.ValueOf(input_).x);
        y_->Show(look_.ValueOf(input_).y);
    }

private:
    NumberField *x_, *y_;
};

class CheckRow : public ControlRow {
public:
    CheckRow(Look& look, Input& input, QWidget* parent)
        : ControlRow(look, input, parent)
        , box_(new Tick(this)) {
        Describe(*box_);
        Line().addWidget(box_);
        Line().addStretch();
        connect(box_, &QCheckBox::clicked, this, [this](bool on) { Set({on ? 1.0 : 0.0, 0.0}); });
    }

protected:
    void ShowValue() override { box_->setChecked(look_.ValueOf(input_).x > 0.5); }

private:
    Tick* box_;
};

/// The wheel scrolls the page and changes no list under way.
class QuietList : public QComboBox {
public:
    using QComboBox::QComboBox;

protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

class ListRow : public ControlRow {
public:
    ListRow(Look& look, Input& input, QWidget* parent)
        : ControlRow(look, input, parent)
        , list_(new QuietList(this)) {
        for (const std::string& entry : input.GetAttrList(host::kTagEntry))
            list_->addItem(QString::fromStdString(media::Trimmed(entry)));
        list_->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        list_->setFocusPolicy(Qt::StrongFocus);
        list_->setMinimumContentsLength(6);
        Describe(*list_);
        Line().addWidget(list_);
        connect(list_, &QComboBox::activated, this, [this](int entry) {
            Set({static_cast<double>(entry), 0.0});
        });
    }

protected:
    void ShowValue() override {
        const double value = look_.ValueOf(input_).x;
        list_->setCurrentIndex(value >= 0 && value < list_->count() ? static_cast<int>(value) : -1);
    }

private:
    QComboBox* list_;
};

class TextRow : public ControlRow {
public:
    TextRow(Look& look, Input& input, QWidget* parent)
        : ControlRow(look, input, parent)
        , field_(new QLineEdit(this)) {
        Describe(*field_);
        Line().addWidget(field_);
        connect(field_, &QLineEdit::editingFinished, this, [this] {
            if (field_->isModified()) Take(field_->text());
        });
    }

protected:
    void ShowValue() override {
        if (!field_->isModified()) field_->setText(QString::fromStdString(look_.TextOf(input_)));
    }
    void Take(const QString& text) {
        field_->setModified(false);
        look_.Do(Title().toStdString(), [&] { look_.WriteText(input_, text.toStdString()); });
    }
    QLineEdit& Field() const { return *field_; }

private:
    QLineEdit* field_;
};

/// A file, or the picture at an image input: chosen in a dialog or dropped here.
class FileRow : public TextRow {
public:
    FileRow(Look& look, Input& input, QWidget* parent)
        : TextRow(look, input, parent)
        , picture_(input.DataType() == Input::Type::Image) {
        setAcceptDrops(true);
        Field().setAcceptDrops(false); // which would take the name as a text
        if (picture_) Field().setPlaceholderText(tr("none: drop a picture here"));
        auto* choose = new QToolButton(this);
        choose->setText("\u2026");
        Describe(*choose);
        choose->setAccessibleName(tr("Choose a file for %1").arg(Title()));
        Line().addWidget(choose);
        connect(choose, &QToolButton::clicked, this, [this] {
            TakeFile(QFileDialog::getOpenFileName(this, Title(), QSettings().value("folder").toString()));
        });
    }

protected:
    void dragEnterEvent(QDragEnterEvent* event) override {
        if (event->mimeData()->hasUrls() && event->mimeData()->urls().first().isLocalFile())
            event->acceptProposedAction();
    }
    void dropEvent(QDropEvent* event) override {
        TakeFile(event->mimeData()->urls().first().toLocalFile());
        event->acceptProposedAction();
    }

private:
    void TakeFile(const QString& file) {
        if (!file.isEmpty()) Take(picture_ ? SequenceOf(file) : file);
    }

    const bool picture_;
};

/// The first channel of a colour: a swatch that opens a dialog, and the number of the channel.
class ColourRow : public NumberRow {
public:
    ColourRow(Look& look, Input& input, QWidget* parent)
        : NumberRow(look, input, parent)
        , swatch_(new QPushButton(this)) {
        const auto same = [&](const Input& other, host::Tag tag) {
            return other.GetAttrI(tag, -1) == input.GetAttrI(tag, -1);
        };
        for (Input* other : look.Op().Inputs())
            if (other->HasAttr(host::kTagColourChannel) && same(*other, host::kTagColourGroup) &&
                same(*other, host::kTagPage))
                channels_.push_back(other);
        Describe(*swatch_);
        swatch_->setFixedSize(30, 20);
        Line().insertWidget(1, swatch_);
        connect(swatch_, &QPushButton::clicked, this, &ColourRow::Choose);
    }

protected:
    void ShowValue() override {
        NumberRow::ShowValue();
        swatch_->setStyleSheet(
            QString("background-color: %1; border: 1px solid palette(mid); border-radius: 3px")
                .arg(Colour().name()));
    }

private:
    QColor Colour() const {
        int rgb[3] = {};
        for (std::size_t i = 0; i < std::min<std::size_t>(3, channels_.size()); ++i)
            rgb[i] = static_cast<int>(255.0 * std::clamp(look_.ValueOf(*channels_[i]).x, 0.0, 1.0) + 0.5);
        return {rgb[0], rgb[1], rgb[2]};
    }
    void Choose() {
        const QColor colour = QColorDialog::getColor(Colour(), this, Title());
        if (!colour.isValid()) return;
        const double rgb[3] = {colour.redF(), colour.greenF(), colour.blueF()};
        look_.Do(Title().toStdString(), [&] {
            for (std::size_t i = 0; i < std::min<std::size_t>(3, channels_.size()); ++i)
                look_.Write(*channels_[i], {rgb[i], 0.0});
        });
    }

    QPushButton* swatch_;
    std::vector<Input*> channels_;
};

} // namespace

ControlRow* MakeControlRow(Look& look, Input& input, QWidget* parent) {
    const bool image = input.DataType() == Input::Type::Image;
    if (image && input.GetAttrI(host::kTagMainLink) == 1) return nullptr;
    const std::string kind = input.GetAttrS(host::kTagControlKind);
    if (image || kind == "FileControl") return new FileRow(look, input, parent);
    if (input.DataType() == Input::Type::Text) return new TextRow(look, input, parent);
    if (input.DataType() == Input::Type::Point) return new PointRow(look, input, parent);
    if (kind == "CheckboxControl") return new CheckRow(look, input, parent);
    if (kind == "ComboControl") return new ListRow(look, input, parent);
    const bool colour = input.HasAttr(host::kTagColourChannel);
    if (colour && input.GetAttrI(host::kTagColourChannel) == 0) return new ColourRow(look, input, parent);
    return new NumberRow(look, input, parent);
}

} // namespace view
