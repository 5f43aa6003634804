#pragma once

#include "host/Input.h"

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace host {

/// A composition: the time that its views show, and the steps that the user can undo. A surrounding program
/// that keeps those steps itself overrides StartUndo and EndUndo.
class K7HOST_API FusionDoc {
public:
    virtual ~FusionDoc() = default;

    /// While set, operators must not react to changes at all (a composition is being loaded, say).
    std::atomic<bool> Silent = false;

    std::atomic<double> CurrentTime = 0.0;

    /// Opens a step, or joins the open one, and records the current state of the input.
    virtual void StartUndo(const std::string& title, Input* input);
    /// Closes the step when called as often as StartUndo was; it is kept if `keep` is set and something has
    /// changed.
    virtual void EndUndo(bool keep);
    /// Titles of the steps, the latest last.
    std::vector<std::string> UndoTitles() const;
    /// Undoes the latest step. False if there is none.
    bool Undo();

    /// Forgets an input that is about to be destroyed.
    void Forget(const Input* input);

private:
    struct Change {
        Input* input;
        Curve before;
    };
    struct Step {
        std::string title;
        std::vector<Change> changes;
    };

    mutable std::mutex mutex_;
    std::vector<Step> steps_;
    Step open_;
    int depth_ = 0;
};

} // namespace host
