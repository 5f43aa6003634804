#pragma once

#include "host/Registry.h"
#include "view/History.h"

#include <QObject>
#include <QString>

#include <functional>

namespace view {

/// The tools whose controls the window shows, one below the other, with their history. They never render:
/// frames are rendered by instances of their own, which are given these values. There is always a tool, and
/// one is chosen.
class Look : public QObject {
    Q_OBJECT

public:
    /// Throws std::runtime_error where the tool cannot be made.
    explicit Look(host::Registry& tool, QObject* parent = nullptr);

    const std::vector<Layer>& Layers() const { return history_.Layers; }
    std::size_t Chosen() const { return chosen_; }
    /// The chosen tool.
    host::Operator& Op() const { return *Layers()[chosen_].op; }
    History& Steps() { return history_; }

    int Frame() const { return static_cast<int>(history_.CurrentTime.load()); }
    void SetFrame(int frame);

    // Changes of the stack, each a step. While a drag lasts they do nothing.
    void Add(host::Registry& tool);     ///< behind the chosen one; chooses it
    void Replace(host::Registry& tool); ///< in place of the chosen one
    void Remove();                      ///< the chosen one, but not the last that is left
    void Move(int by);                  ///< the chosen one, down or up
    void SwitchOn(std::size_t layer, bool on);
    /// All tools at once; chooses the last. Those of `layers` were made with NewLayer.
    void ReplaceAll(const QString& title, std::vector<Layer> layers);
    void Choose(std::size_t layer);

    /// A tool that can stand in this stack. Throws std::runtime_error.
    Layer NewLayer(const host::Registry& tool);

    /// Does what the user asks for as one step, and tells that things have changed.
    void Do(const std::string& title, const std::function<void()>& change);
    /// A step that lasts, as a drag does. Changes within it are told of as they come.
    void Begin(const std::string& title);
    void End();

    // A value at the current frame: a key where the input is animated.
    host::Curve::Value ValueOf(const host::Input& input) const;
    void Write(host::Input& input, const host::Curve::Value& value);
    /// The text of an input; of an image, its file.
    std::string TextOf(const host::Input& input) const;
    void WriteText(host::Input& input, const std::string& text);
    /// A file at an image input of the chosen tool, by its id or label. Not a step.
    void LinkFile(const std::string& input, const std::string& file);

    void Undo();
    void Redo();
    void Tell() { emit Changed(); }

    /// True from the first change until MarkSaved: a look that would be lost.
    bool Unsaved() const { return saved_ != StateOf(Layers()); }
    void MarkSaved() { saved_ = StateOf(Layers()); }

signals:
    void Changed();

private:
    void Restack(const QString& title, const std::function<void()>& change);
    void KeepChoice(const host::Operator* op);

    History history_; ///< outlives what is made in it
    std::size_t chosen_ = 0;
    StackState saved_;
};

} // namespace view
