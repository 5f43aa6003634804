#pragma once

#include "ofx/Suites.h"

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>

namespace ofx {

/// What the host refused while a tool was working. Tools know nothing of failing hosts: they continue with
/// what they have, and the action ends with the first refusal. Any thread may note one.
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

/// Writes to a host's parameters. The standard allows them only in some actions, on that action's thread;
/// other writes wait for the next such action.
class WriteQueue {
public:
    explicit WriteQueue(Refusals& refusals) : refusals_(refusals) {}

    using Write = std::function<void()>;
    /// Makes the write, now or later. If it throws Failure, that is noted.
    void Take(Write write);

    /// For its lifetime its thread may write; its constructor makes the writes that have waited.
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

/// State that the values of an instance share.
struct Exchange {
    Refusals refusals;
    WriteQueue writes{refusals};
    /// The scale of lengths in pixels in the frame being rendered, which may be a proxy.
    std::atomic<double> pixelScale = 1.0;
};

} // namespace ofx
