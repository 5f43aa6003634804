#include "host/ThreadPool.h"

#include <algorithm>
#include <exception>

namespace host {

struct ThreadPool::Job {
    Job(long n, const std::function<void(long)>& t) : count(n), task(t) {}

    const long count;
    const std::function<void(long)>& task;
    long next = 0; ///< guarded by the pool's mutex, as is `done`
    long done = 0;
    std::exception_ptr failure; ///< the first one of a call
    std::condition_variable finished;
};

ThreadPool::ThreadPool(unsigned threads) {
    for (unsigned i = 0; i < threads; ++i) threads_.emplace_back([this] { Serve(); });
}

ThreadPool::~ThreadPool() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_all();
    for (std::thread& thread : threads_) thread.join();
}

void ThreadPool::Run(long count, const std::function<void(long)>& task) {
    if (count < 1) return;
    const auto job = std::make_shared<Job>(count, task);
    {
        const std::lock_guard lock(mutex_);
        jobs_.push_back(job);
    }
    if (count > 1) wake_.notify_all();
    Work(job);
    std::unique_lock lock(mutex_);
    job->finished.wait(lock, [&] { return job->done == job->count; });
    if (job->failure) std::rethrow_exception(job->failure);
}

void ThreadPool::Work(const std::shared_ptr<Job>& job) {
    std::unique_lock lock(mutex_);
    while (job->next < job->count) {
        const long index = job->next++;
        if (job->next == job->count) std::erase(jobs_, job);
        lock.unlock();
        std::exception_ptr failure;
        try {
            job->task(index);
        } catch (...) {
            failure = std::current_exception();
        }
        lock.lock();
        if (!job->failure) job->failure = failure;
        if (++job->done == job->count) job->finished.notify_all();
    }
}

void ThreadPool::Serve() {
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return stopping_ || !jobs_.empty(); });
        if (stopping_) return;
        const std::shared_ptr<Job> job = jobs_.front();
        lock.unlock();
        Work(job);
        lock.lock();
    }
}

} // namespace host
