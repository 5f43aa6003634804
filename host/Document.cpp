#include "host/Document.h"

#include <algorithm>
#include <utility>

namespace host {

void FusionDoc::StartUndo(const std::string& title, Input* input) {
    const std::lock_guard lock(mutex_);
    if (depth_++ == 0) open_ = {title, {}};
    const bool noted = std::any_of(open_.changes.begin(), open_.changes.end(),
                                   [&](const Change& change) { return change.input == input; });
    if (!noted) open_.changes.push_back({input, input->GetCurve()});
}

void FusionDoc::EndUndo(bool keep) {
    const std::lock_guard lock(mutex_);
    if (depth_ == 0 || --depth_ > 0) return;
    const bool changed = std::any_of(open_.changes.begin(), open_.changes.end(), [](const Change& change) {
        return change.input->GetCurve() != change.before;
    });
    if (keep && changed) steps_.push_back(std::move(open_));
    open_ = {};
}

std::vector<std::string> FusionDoc::UndoTitles() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::string> titles;
    for (const Step& step : steps_) titles.push_back(step.title);
    return titles;
}

bool FusionDoc::Undo() {
    Step step;
    {
        const std::lock_guard lock(mutex_);
        if (steps_.empty()) return false;
        step = std::move(steps_.back());
        steps_.pop_back();
    }
    for (const Change& change : step.changes) change.input->SetCurve(change.before);
    return true;
}

void FusionDoc::Forget(const Input* input) {
    const std::lock_guard lock(mutex_);
    const auto isOfInput = [&](const Change& change) { return change.input == input; };
    std::erase_if(open_.changes, isOfInput);
    for (Step& step : steps_) std::erase_if(step.changes, isOfInput);
    std::erase_if(steps_, [](const Step& step) { return step.changes.empty(); });
}

} // namespace host
