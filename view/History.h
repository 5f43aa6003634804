#pragma once

#include "host/Document.h"
#include "view/Layer.h"

#include <string>
#include <vector>

namespace view {

/// A composition of tools one below the other, with the steps that the user can take back and take again. A
/// step is all that has changed while it was open, what the tools' reactions have written included. For the
/// thread of the window.
class History : public host::FusionDoc {
public:
    std::vector<Layer> Layers;

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
        StackState other; ///< what taking the step brings back
    };
    bool Take(std::vector<Step>& from, std::vector<Step>& to);

    std::vector<Step> done_, undone_;
    Step open_;
    int depth_ = 0;
};

} // namespace view
