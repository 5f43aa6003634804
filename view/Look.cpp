#include "view/Look.h"

#include "media/PlugIns.h"
#include "media/Words.h"

#include <algorithm>
#include <stdexcept>

namespace view {

namespace {

QString NameOf(const host::Registry& tool) {
    return QString::fromStdString(media::PlainName(tool));
}

/// The place of a tool in a stack; the end where it has been removed.
auto FindLayer(auto& layers, const host::Operator* op) {
    return std::find_if(layers.begin(), layers.end(),
                        [&](const Layer& layer) { return layer.op.get() == op; });
}

} // namespace

Look::Look(host::Registry& tool, QObject* parent) : QObject(parent) {
    history_.Layers.push_back(NewLayer(tool));
    MarkSaved();
}

Layer Look::NewLayer(const host::Registry& tool) {
    host::Operator* op = tool.NewOperator(&history_);
    if (!op) throw std::runtime_error("the tool " + media::PlainName(tool) + " could not be made");
    return {{op, [](host::Operator* made) { made->Recycle(); }}, true, {}};
}

void Look::SetFrame(int frame) {
    history_.CurrentTime = frame;
    emit Changed();
}

// The stack.

void Look::Restack(const QString& title, const std::function<void()>& change) {
    if (!history_.StepOpen()) Do(title.toStdString(), change);
}

void Look::Add(host::Registry& tool) {
    Restack(tr("Add %1").arg(NameOf(tool)), [&] {
        const Layer layer = NewLayer(tool);
        ++chosen_;
        history_.Layers.insert(history_.Layers.begin() + static_cast<std::ptrdiff_t>(chosen_), layer);
    });
}

void Look::Replace(host::Registry& tool) {
    if (Op().Class() == &tool) return;
    Restack(tr("%1 for %2").arg(NameOf(tool), NameOf(*Op().Class())), [&] {
        Layer layer = NewLayer(tool);
        Layer& old = history_.Layers[chosen_];
        for (const auto& [id, file] : old.files)
            if (layer.op->FindInput(id)) layer.files[id] = file; // the mask stays
        std::swap(old, layer);
    });
}

void Look::Remove() {
    if (Layers().size() == 1) return;
    Restack(tr("Remove %1").arg(NameOf(*Op().Class())), [&] {
        history_.Layers.erase(history_.Layers.begin() + static_cast<std::ptrdiff_t>(chosen_));
        chosen_ = std::min(chosen_, Layers().size() - 1);
    });
}

void Look::Move(int by) {
    const std::size_t to = chosen_ + static_cast<std::size_t>(by); // wraps above the top
    if (to >= Layers().size()) return;
    Restack(tr("Move %1").arg(NameOf(*Op().Class())), [&] {
        std::swap(history_.Layers[chosen_], history_.Layers[to]);
        chosen_ = to;
    });
}

void Look::SwitchOn(std::size_t layer, bool on) {
    const QString title = on ? tr("Switch %1 on") : tr("Switch %1 off");
    Restack(title.arg(NameOf(*Layers()[layer].op->Class())), [&] { history_.Layers[layer].on = on; });
}

void Look::ReplaceAll(const QString& title, std::vector<Layer> layers) {
    Restack(title, [&] {
        std::swap(history_.Layers, layers);
        chosen_ = Layers().size() - 1;
    });
}

void Look::Choose(std::size_t layer) {
    if (history_.StepOpen() || layer >= Layers().size() || layer == chosen_) return;
    chosen_ = layer;
    emit Changed();
}

/// The chosen tool stays chosen, wherever it has gone.
void Look::KeepChoice(const host::Operator* op) {
    const auto found = FindLayer(Layers(), op);
    if (found != Layers().end()) chosen_ = static_cast<std::size_t>(found - Layers().begin());
    chosen_ = std::min(chosen_, Layers().size() - 1);
}

// Steps.

void Look::Do(const std::string& title, const std::function<void()>& change) {
    Begin(title);
    try {
        change();
    } catch (...) {
        End();
        throw;
    }
    End();
}

void Look::Begin(const std::string& title) {
    history_.StartUndo(title, nullptr);
}

void Look::End() {
    history_.EndUndo(true);
    emit Changed();
}

void Look::Undo() {
    const host::Operator* op = &Op();
    if (!history_.StepBack()) return;
    KeepChoice(op);
    emit Changed();
}

void Look::Redo() {
    const host::Operator* op = &Op();
    if (!history_.StepForward()) return;
    KeepChoice(op);
    emit Changed();
}

// Values.

host::Curve::Value Look::ValueOf(const host::Input& input) const {
    return input.GetCurve().At(history_.CurrentTime);
}

void Look::Write(host::Input& input, const host::Curve::Value& value) {
    const bool point = input.DataType() == host::Input::Type::Point;
    host::Parameter* parameter = point ? static_cast<host::Parameter*>(new host::Point(value.x, value.y, 0.0))
                                       : new host::Number(value.x);
    const double time = input.GetCurve().Animated() ? history_.CurrentTime.load() : host::kTimeNow;
    input.SetSource(host::AutoParameter(parameter).get(), time, 1, nullptr);
    emit Changed();
}

std::string Look::TextOf(const host::Input& input) const {
    if (input.DataType() != host::Input::Type::Image) return input.GetText();
    const auto layer = FindLayer(Layers(), input.Owner());
    if (layer == Layers().end()) return "";
    const auto file = layer->files.find(input.Id());
    return file == layer->files.end() ? "" : file->second;
}

void Look::WriteText(host::Input& input, const std::string& text) {
    if (input.DataType() == host::Input::Type::Image) {
        const auto layer = FindLayer(history_.Layers, input.Owner());
        if (layer == Layers().end()) return;
        if (text.empty())
            layer->files.erase(input.Id());
        else
            layer->files[input.Id()] = text;
    } else {
        input.SetSource(host::AutoParameter(new host::Text(text)).get(), host::kTimeNow, 1, nullptr);
    }
    emit Changed();
}

void Look::LinkFile(const std::string& input, const std::string& file) {
    std::string id = input; // whoever links the inputs tells of a wrong one
    for (const host::Input* known : Op().Inputs())
        if (media::SameWord(known->Id(), input) || media::SameWord(known->Name(), input)) id = known->Id();
    history_.Layers[chosen_].files[id] = file;
}

} // namespace view
