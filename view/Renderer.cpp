#include "view/Renderer.h"

#include <utility>

namespace view {

Renderer::Renderer(QObject* parent) : QObject(parent) {
    qRegisterMetaType<ShotPtr>();
    thread_ = std::thread([this] { Run(); });
}

Renderer::~Renderer() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        StopFrame();
    }
    wake_.notify_one();
    thread_.join();
}

void Renderer::StopFrame() {
    if (working_) working_->SetAborted(true);
}

void Renderer::Ask(Order order) {
    {
        const std::lock_guard lock(mutex_);
        if (!patient_ || order.pipeline != working_) StopFrame();
        waiting_ = std::move(order);
    }
    wake_.notify_one();
}

void Renderer::Abort() {
    const std::lock_guard lock(mutex_);
    waiting_.reset();
    StopFrame();
}

bool Renderer::Busy() const {
    const std::lock_guard lock(mutex_);
    return working_ || waiting_;
}

void Renderer::Run() {
    std::unique_lock lock(mutex_);
    while (true) {
        wake_.wait(lock, [&] { return ending_ || waiting_; });
        if (ending_) return;
        Order order = std::move(*waiting_);
        waiting_.reset();
        working_ = order.pipeline;
        patient_ = order.patient;
        working_->SetAborted(false);
        lock.unlock();
        const std::shared_ptr<Shot> shot = working_->Render(order);
        order = {};
        lock.lock();
        std::shared_ptr<Pipeline> done = std::exchange(working_, nullptr);
        if (shot) emit Done(shot);
        lock.unlock();
        done.reset(); // tools that nobody needs any more go without the lock
        lock.lock();
    }
}

} // namespace view
