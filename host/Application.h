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

    /// The number of processors that tools see, and so the number of chunks of a dispatch; initially the
    /// machine's. It does not change the number of threads.
    std::atomic<int> ProcessorCount;

    /// The number of parts into which tools divide a frame if their class says that the division shows
    /// (kTagRegShowsDivision); 0, the initial value, stands for ProcessorCount. The front ends set 1, so that
    /// frames are the same on every machine.
    std::atomic<int> Division = 0;

    /// Runs task(0) to task(count - 1) on the pool's threads and this one, or on the runner if one was set;
    /// returns when all have returned. Concurrent calls from several threads share the pool.
    void RunOnThreads(long count, const std::function<void(long)>& task);

    /// The number of threads that the pool has besides the callers; initially one less than the machine. To
    /// be called before anything runs.
    void SetPoolThreads(unsigned threads);

    /// Uses threads of the surrounding program. The runner returns false if it ran nothing; the pool then
    /// does the work. To be set before anything runs.
    using Task = std::function<void(long)>;
    using TaskRunner = std::function<bool(long count, const Task& task)>;
    void SetTaskRunner(TaskRunner runner) { runner_ = std::move(runner); }

    /// The listener to what operators report; initially none. It may be called from any thread.
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
