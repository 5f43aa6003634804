#pragma once

#include "host/Export.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace host {

/// Threads that are created once and serve any number of jobs at a time. A job's caller works on it too, so
/// that it makes progress even if all threads are busy.
class K7HOST_API ThreadPool {
public:
    explicit ThreadPool(unsigned threads);
    ~ThreadPool();
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    /// Calls task once for each index from 0 to count - 1; returns when all calls have returned, and rethrows
    /// the first exception.
    void Run(long count, const std::function<void(long)>& task);

private:
    struct Job;
    void Serve();
    void Work(const std::shared_ptr<Job>& job);

    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::shared_ptr<Job>> jobs_; ///< jobs with indices not yet taken
    bool stopping_ = false;
    std::vector<std::thread> threads_;
};

} // namespace host
