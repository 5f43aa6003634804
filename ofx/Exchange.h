#pragma once

#include "ofx/Suites.h"

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>

namespace ofx {

/// What the host refused while a tool was at work. Tools know nothing of failing hosts: they go on with what
/// they have, and the action ends with the first refusal. Any thread may note one.
class Refusals {
public:
    void Note(const Failure& failure);
    bool Any();
    /// Throws the first one since the last call.
    void Raise();

private:
    std::mutex mutex_;
    std::optional<Failure> first_;
};

/// Writes to a host's parameters. The standard allows them in some actions only, on that action's thread;
/// what comes at another moment waits for the next such action.
class WriteQueue {
public:
    explicit WriteQueue(Refusals& refusals) : refusals_(refusals) {}

    using Write = std::function<void()>;
    /// Makes the write, now or later. A Failure of it is noted.
    void Take(Write write);

    /// While one lives, its thread may write; what has waited is written at its start.
    class Allowed {
    public:
        explicit Allowed(WriteQueue& queue);
        ~Allowed();
        Allowed(const Allowed&) = delete;
        Allowed& operator=(const Allowed&) = delete;
    };
    static bool IsAllowed();

private:
    void Make(const Write& write);
    void Flush();

    Refusals& refusals_;
    std::mutex mutex_;
    std::deque<Write> waiting_;
};

/// What the values of an instance share.
struct Exchange {
    Refusals refusals;
    WriteQueue writes{refusals};
    /// What lengths in pixels are multiplied by in the frame that is being rendered, a proxy perhaps.
    std::atomic<double> pixelScale = 1.0;
};

} // namespace ofx
