#pragma once

#include "host/Document.h"
#include "view/Values.h"

#include <string>
#include <vector>

namespace view {

/// The steps that the user can take back and take again. A step is all that has changed in the tool while it
/// was open, what the tool's reactions have written included. For the thread of the window.
class History : public host::FusionDoc {
public:
    /// The operator lives in this document, and is the only one there.
    void Watch(host::Operator& op) { operator_ = &op; }

    void StartUndo(const std::string& title, host::Input* input) override;
    void EndUndo(bool keep) override;

    bool StepOpen() const { return depth_ > 0; }
    bool StepBack();
    bool StepForward();

    /// Title of the next step in a direction; empty where there is none.
    std::string BackTitle() const { return done_.empty() ? "" : done_.back().title; }
    std::string ForwardTitle() const { return undone_.empty() ? "" : undone_.back().title; }

private:
    struct Step {
        std::string title;
        Values other; ///< what taking the step brings back
    };
    bool Take(std::vector<Step>& from, std::vector<Step>& to);

    host::Operator* operator_ = nullptr;
    std::vector<Step> done_, undone_;
    Step open_;
    int depth_ = 0;
};

} // namespace view
