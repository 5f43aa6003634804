#include "view/Renderer.h"

#include "media/Errors.h"

#include <chrono>
#include <new>

namespace view {

namespace {

/// The values asked for with what the frame has written in place of what it was given; nothing where it has
/// written nothing.
std::optional<Values> Written(Values asked, const Values& sent, const Values& now) {
    bool any = false;
    for (std::size_t i = 0; i < now.size(); ++i)
        if (!now[i].SameValue(sent[i])) {
            asked[i] = now[i];
            any = true;
        }
    return any ? std::optional(std::move(asked)) : std::nullopt;
}

} // namespace

Renderer::Renderer(host::Registry& entry, const std::vector<std::string>& links, QObject* parent)
    : QObject(parent)
    , tool_({&entry}) {
    qRegisterMetaType<ShotPtr>();
    tool_.LinkAll({links}, media::Missing::Error, "");
    span_ = tool_.MainClip().Span().value_or(media::FrameSpan{});
    tool_.SetExtent(span_);
    for (host::Input* input : tool_.Op().Inputs())
        if (media::ClipFeed* feed = tool_.Feeding(input)) {
            proxies_.push_back(std::make_unique<Proxy>(*feed));
            input->Connect(proxies_.back().get());
        }
    thread_ = std::thread([this] { Run(); });
}

Renderer::~Renderer() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
        tool_.Op().AbortFlag = true;
    }
    wake_.notify_one();
    thread_.join();
}

void Renderer::Ask(Order order) {
    {
        const std::lock_guard lock(mutex_);
        waiting_ = std::move(order);
        if (working_ && !patient_) tool_.Op().AbortFlag = true;
    }
    wake_.notify_one();
}

void Renderer::Abort() {
    const std::lock_guard lock(mutex_);
    waiting_.reset();
    if (working_) tool_.Op().AbortFlag = true;
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
        const Order order = std::move(*waiting_);
        waiting_.reset();
        working_ = true;
        patient_ = order.patient;
        tool_.Op().AbortFlag = false;
        lock.unlock();
        const std::shared_ptr<Shot> shot = Render(order);
        lock.lock();
        working_ = false;
        if (shot) emit Done(shot);
    }
}

void Renderer::Prepare(const Order& order) {
    for (const auto& proxy : proxies_) proxy->SetDivisor(order.divisor);
    Restore(tool_.Op(), Scaled(tool_.Op(), order.values, order.divisor));
    tool_.ChooseDepth(media::WorkingDepth::OfPicture, order.frame);
}

std::shared_ptr<Shot> Renderer::Render(const Order& order) {
    auto shot = std::make_shared<Shot>();
    shot->frame = order.frame;
    shot->version = order.version;
    shot->divisor = order.divisor;
    const auto start = std::chrono::steady_clock::now();
    try {
        Prepare(order);
        shot->before = tool_.MainClip().At(order.frame).image;
        const Values sent = ValuesOf(tool_.Op());
        shot->after = tool_.Render(order.frame);
        if (!shot->after) return nullptr; // aborted
        if (order.divisor == 1) shot->written = Written(order.values, sent, ValuesOf(tool_.Op()));
    } catch (const std::bad_alloc&) {
        shot->problem = "there is not enough memory for this frame";
    } catch (const std::exception& error) {
        shot->problem = error.what();
    }
    shot->milliseconds =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    return shot;
}

} // namespace view
