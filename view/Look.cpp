#include "view/Look.h"

#include "media/PlugIns.h"

#include <stdexcept>

namespace view {

Look::Look(host::Registry& entry, QObject* parent)
    : QObject(parent)
    , operator_(entry.NewOperator(&history_)) {
    if (!operator_) throw std::runtime_error("the tool " + media::PlainName(entry) + " could not be made");
    history_.Watch(*operator_);
    MarkSaved();
}

void Look::SetFrame(int frame) {
    history_.CurrentTime = frame;
    emit Changed();
}

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

void Look::WriteText(host::Input& input, const std::string& text) {
    input.SetSource(host::AutoParameter(new host::Text(text)).get(), host::kTimeNow, 1, nullptr);
    emit Changed();
}

void Look::Undo() {
    if (history_.StepBack()) emit Changed();
}

void Look::Redo() {
    if (history_.StepForward()) emit Changed();
}

} // namespace view
