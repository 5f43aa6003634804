#include "host/Application.h"

#include "host/ThreadPool.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace host {

FusionApp::FusionApp()
    : ProcessorCount(static_cast<int>(std::max(1u, std::thread::hardware_concurrency())))
    , pool_(std::make_unique<ThreadPool>(std::max(1u, std::thread::hardware_concurrency()) - 1)) {}

FusionApp::~FusionApp() = default;

void FusionApp::SetPoolThreads(unsigned threads) {
    pool_ = std::make_unique<ThreadPool>(threads);
}

void FusionApp::RunOnThreads(long count, const std::function<void(long)>& task) {
    if (!runner_ || !runner_(count, task)) pool_->Run(count, task);
}

void FusionApp::SetMessageListener(MessageListener listener) {
    const std::lock_guard lock(mutex_);
    listener_ = std::move(listener);
}

void FusionApp::Message(const Operator& op, const std::string& text) {
    const std::lock_guard lock(mutex_);
    if (listener_) listener_(op, text);
}

FusionApp* GetApp() {
    // Never destroyed: at the end of a process its threads may be gone before the library is.
    static auto* const app = new FusionApp;
    return app;
}

} // namespace host
