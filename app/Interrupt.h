#pragma once

#include <atomic>
#include <vector>

namespace app {

/// For its lifetime, the first Ctrl-C (or a request to terminate) raises flags; a second one ends the program
/// at once.
class Interrupt {
public:
    explicit Interrupt(std::vector<std::atomic<bool>*> flags);
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    /// The exit code of a program that was stopped by the signal: 130 for Ctrl-C. 0 if none has come.
    int ExitCode() const;

private:
    const std::vector<std::atomic<bool>*> flags_;
};

/// Until a render takes over, and after it, a terminating signal removes unfinished files and ends the
/// program.
void EndBySignals();

} // namespace app
