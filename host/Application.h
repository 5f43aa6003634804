#pragma once

#include "host/Export.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace host {

class Operator;
class ThreadPool;

/// The program that runs compositions.
class K7HOST_API FusionApp {
public:
    FusionApp();
    ~FusionApp();
    FusionApp(const FusionApp&) = delete;
    FusionApp& operator=(const FusionApp&) = delete;

    /// What tools take as the number of processors, and so the number of chunks of a dispatch; the machine's
    /// at the start. It does not change how many threads there are.
    std::atomic<int> ProcessorCount;

    /// Into how many parts tools divide a frame whose class says that the division shows
    /// (kTagRegShowsDivision); 0, as at the start, stands for ProcessorCount. The front ends set 1, so that
    /// frames are the same on every machine.
    std::atomic<int> Division = 0;

    /// Runs task(0) to task(count - 1) on the pool's threads and this one, or as the runner that was set does
    /// it; returns when all have returned.
    /// Calls from several threads at once share the pool.
    void RunOnThreads(long count, const std::function<void(long)>& task);

    /// How many threads the pool has beside the callers; at the start one less than the machine. Before
    /// anything runs.
    void SetPoolThreads(unsigned threads);

    /// Threads of the program around this host. The runner says false where it ran nothing; the pool does it
    /// then. Set before anything runs.
    using Task = std::function<void(long)>;
    using TaskRunner = std::function<bool(long count, const Task& task)>;
    void SetTaskRunner(TaskRunner runner) { runner_ = std::move(runner); }

    /// Who hears what operators report; nobody at the start. The listener may be called from any thread.
    using MessageListener = std::function<void(const Operator& op, const std::string& text)>;
    void SetMessageListener(MessageListener listener);
    void Message(const Operator& op, const std::string& text);

private:
    std::unique_ptr<ThreadPool> pool_;
    TaskRunner runner_;
    std::mutex mutex_;
    MessageListener listener_;
};

K7HOST_API FusionApp* GetApp();

} // namespace host
