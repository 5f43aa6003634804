#include "view/History.h"

#include <utility>

namespace view {

void History::StartUndo(const std::string& title, host::Input*) {
    if (depth_++ == 0) open_ = {title, StateOf(Layers)};
}

void History::EndUndo(bool keep) {
    if (depth_ == 0 || --depth_ > 0) return;
    if (!keep || open_.other == StateOf(Layers)) return;
    done_.push_back(std::exchange(open_, {}));
    undone_.clear();
}

bool History::StepBack() {
    return Take(done_, undone_);
}

bool History::StepForward() {
    return Take(undone_, done_);
}

bool History::Take(std::vector<Step>& from, std::vector<Step>& to) {
    if (from.empty() || depth_ > 0) return false;
    Step step = std::move(from.back());
    from.pop_back();
    const StackState before = std::exchange(step.other, StateOf(Layers));
    Restore(Layers, before);
    to.push_back(std::move(step));
    return true;
}

} // namespace view
