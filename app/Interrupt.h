#pragma once

#include <atomic>

namespace app {

/// While it lives, the first Ctrl-C (or a request to terminate) raises a flag; a second one ends the program
/// on the spot.
class Interrupt {
public:
    explicit Interrupt(std::atomic<bool>& flag);
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    /// What a program that was stopped by the signal ends with: 130 for Ctrl-C. 0 if none has come.
    int ExitCode() const;
};

/// Until a render takes over, and after it, a signal to end removes unfinished files and ends the program.
void EndBySignals();

} // namespace app
