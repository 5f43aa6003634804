#include "ofx/Exchange.h"

#include <utility>

namespace ofx {

void Refusals::Note(const Failure& failure) {
    const std::lock_guard lock(mutex_);
    if (!first_) first_ = failure;
}

bool Refusals::Any() {
    const std::lock_guard lock(mutex_);
    return first_.has_value();
}

void Refusals::Raise() {
    std::unique_lock lock(mutex_);
    const std::optional<Failure> failure = std::exchange(first_, std::nullopt);
    lock.unlock();
    if (failure) throw Failure(*failure);
}

namespace {
thread_local int writingAllowed = 0;
}

bool WriteQueue::IsAllowed() {
    return writingAllowed > 0;
}

void WriteQueue::Make(const Write& write) {
    try {
        write();
    } catch (const Failure& failure) {
        refusals_.Note(failure);
    }
}

void WriteQueue::Take(Write write) {
    if (IsAllowed()) return Make(write);
    const std::lock_guard lock(mutex_);
    waiting_.push_back(std::move(write));
}

void WriteQueue::Flush() {
    std::deque<Write> writes;
    {
        const std::lock_guard lock(mutex_);
        writes.swap(waiting_);
    }
    for (const Write& write : writes) Make(write);
}

WriteQueue::Allowed::Allowed(WriteQueue& queue) {
    if (++writingAllowed == 1) queue.Flush();
}
WriteQueue::Allowed::~Allowed() {
    --writingAllowed;
}

} // namespace ofx
