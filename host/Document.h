#pragma once

#include "host/Input.h"

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace host {

/// A composition: the time that its views show, and the steps that the user can take back. Where the program
/// around this host keeps those steps itself, it takes the place of StartUndo and EndUndo.
class K7HOST_API FusionDoc {
public:
    virtual ~FusionDoc() = default;

    /// While set, operators must not react to changes at all (a composition is being loaded, say).
    std::atomic<bool> Silent = false;

    std::atomic<double> CurrentTime = 0.0;

    /// Opens a step, or joins the one that is open, and notes the input as it is now.
    virtual void StartUndo(const std::string& title, Input* input);
    /// Closes the step when called as often as StartUndo was; it stays if `keep` and something has changed.
    virtual void EndUndo(bool keep);
    /// Titles of the steps, the latest last.
    std::vector<std::string> UndoTitles() const;
    /// Takes back the latest step. False if there is none.
    bool Undo();

    /// Drops what is noted of an input that goes away.
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
