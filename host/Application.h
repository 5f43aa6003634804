#pragma once

#include "host/Export.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

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

    /// Runs task(0) to task(count - 1) on the pool's threads and this one; returns when all have returned.
    /// Calls from several threads at once share the pool.
    void RunOnThreads(long count, const std::function<void(long)>& task);

    /// Who hears what operators report; nobody at the start. The listener may be called from any thread.
    using MessageListener = std::function<void(const Operator& op, const std::string& text)>;
    void SetMessageListener(MessageListener listener);
    void Message(const Operator& op, const std::string& text);

private:
    std::unique_ptr<ThreadPool> pool_;
    std::mutex mutex_;
    MessageListener listener_;
};

K7HOST_API FusionApp* GetApp();

} // namespace host
