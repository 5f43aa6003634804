#pragma once

#include "host/Registry.h"
#include "view/History.h"

#include <QObject>

#include <functional>

namespace view {

/// The tool whose controls the window shows, with its history. It never renders: frames are rendered by an
/// instance of their own, which is given these values.
class Look : public QObject {
    Q_OBJECT

public:
    /// Throws std::runtime_error where the tool cannot be made.
    explicit Look(host::Registry& entry, QObject* parent = nullptr);

    host::Operator& Op() const { return *operator_; }
    History& Steps() { return history_; }

    int Frame() const { return static_cast<int>(history_.CurrentTime.load()); }
    void SetFrame(int frame);

    /// Does what the user asks for as one step, and tells that things have changed.
    void Do(const std::string& title, const std::function<void()>& change);
    /// A step that lasts, as a drag does. Changes within it are told of as they come.
    void Begin(const std::string& title);
    void End();

    // A value at the current frame: a key where the input is animated.
    host::Curve::Value ValueOf(const host::Input& input) const;
    void Write(host::Input& input, const host::Curve::Value& value);
    void WriteText(host::Input& input, const std::string& text);

    void Undo();
    void Redo();
    void Tell() { emit Changed(); }

    /// True from the first change until Saved: a look that would be lost.
    bool Unsaved() const { return saved_ != ValuesOf(*operator_); }
    void MarkSaved() { saved_ = ValuesOf(*operator_); }

signals:
    void Changed();

private:
    History history_; ///< outlives the operator
    host::Ref<host::Operator> operator_;
    Values saved_;
};

} // namespace view
