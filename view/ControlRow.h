#pragma once

#include "view/Look.h"

#include <QLabel>
#include <QWidget>

class QHBoxLayout;

namespace view {

/// One control of the tool: its label, with a menu, and what kind of editor its tags ask for.
class ControlRow : public QWidget {
    Q_OBJECT

public:
    ControlRow(Look& look, host::Input& input, QWidget* parent = nullptr);

    /// Shows the control as it is now.
    void Refresh();

protected:
    /// Puts the editor behind the label.
    QHBoxLayout& Line() const { return *line_; }
    virtual void ShowValue() = 0;

    QString Title() const;
    /// Whether it has a number or a point, which can have keys, and no text.
    bool Keyable() const;
    bool IsChanged() const;
    /// Name, tooltip and place in the order of keys for a part of the editor.
    void Describe(QWidget& part) const;
    void BeginStep();
    void Write(const host::Curve::Value& value) { look_.Write(input_, value); }
    void EndStep() { look_.End(); }
    /// A step of one write.
    void Set(const host::Curve::Value& value);
    void Reset();

    Look& look_;
    host::Input& input_;

private:
    void FillMenu(QMenu& menu);
    void SetCurve(const QString& title, const host::Curve& curve);
    void SetKey();
    void RemoveKey();
    void Copy();
    void Paste();

    QLabel* label_;
    QHBoxLayout* line_;
};

/// The row for an input, by its type and tags. Null for the main picture.
ControlRow* MakeControlRow(Look& look, host::Input& input, QWidget* parent);

} // namespace view
