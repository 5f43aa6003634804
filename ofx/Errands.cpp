#include "ofx/Errands.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace ofx {

namespace {

constexpr std::chrono::milliseconds kPollInterval(10);

class Desk {
public:
    void Bring(const std::function<void()>& errand) {
        std::unique_lock lock(mutex_);
        errand_ = &errand;
        wake_.notify_all();
        wake_.wait(lock, [&] { return !errand_; });
        if (error_) std::rethrow_exception(std::exchange(error_, nullptr));
    }

    void Close() {
        const std::lock_guard lock(mutex_);
        closed_ = true;
        wake_.notify_all();
    }

    void Serve(const std::function<void()>& poll) {
        std::unique_lock lock(mutex_);
        while (!closed_) {
            wake_.wait_for(lock, kPollInterval, [&] { return closed_ || errand_; });
            if (errand_) RunErrand();
            lock.unlock();
            poll();
            lock.lock();
        }
    }

private:
    void RunErrand() {
        try {
            (*errand_)();
        } catch (...) {
            error_ = std::current_exception();
        }
        errand_ = nullptr;
        wake_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable wake_;
    const std::function<void()>* errand_ = nullptr;
    std::exception_ptr error_;
    bool closed_ = false;
};

thread_local Desk* desk = nullptr; ///< where work on this thread leaves its calls to the host

} // namespace

void WorkAside(const std::function<void()>& work, const std::function<void()>& poll) {
    Desk ours;
    std::exception_ptr error;
    std::thread worker;
    try {
        worker = std::thread([&] {
            desk = &ours;
            try {
                work();
            } catch (...) {
                error = std::current_exception();
            }
            desk = nullptr;
            ours.Close();
        });
    } catch (const std::system_error&) { // the system is out of threads
        poll();
        return work();
    }
    ours.Serve(poll);
    worker.join();
    if (error) std::rethrow_exception(error);
}

void OnHostThread(const std::function<void()>& errand) {
    if (desk)
        desk->Bring(errand);
    else
        errand();
}

} // namespace ofx
