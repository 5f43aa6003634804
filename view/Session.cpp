#include "view/Session.h"

#include <algorithm>

namespace view {

namespace {

constexpr int kFramesPerSecond = 24;
constexpr double kSlow = 100.0; ///< milliseconds from which a drag shows smaller pictures

} // namespace

Session::Session(QObject* parent) : QObject(parent) {
    player_.setInterval(1000 / kFramesPerSecond);
    player_.setTimerType(Qt::PreciseTimer);
    connect(&player_, &QTimer::timeout, this, &Session::Advance);
}

void Session::Open(host::Registry& entry, const std::vector<std::string>& links) {
    auto renderer = std::make_unique<Renderer>(entry, links);
    auto look = std::make_unique<Look>(entry);
    Play(false);
    std::swap(renderer_, renderer);
    std::swap(look_, look);
    const bool sameClip = links == links_;
    links_ = links;
    store_.Clear();
    values_ = ValuesOf(look_->Op());
    ++version_;
    fullTime_ = 0.0;
    const media::FrameSpan span = Span();
    if (!sameClip) frame_ = (span.first + span.last) / 2;
    frame_ = std::clamp(frame_, span.first, span.last);
    look_->SetFrame(frame_);
    connect(renderer_.get(), &Renderer::Done, this, &Session::TakeShot, Qt::QueuedConnection);
    connect(look_.get(), &Look::Changed, this, &Session::TakeChange);
    emit Opened(); // the old look is still there for those who let go of it now
    Request();
}

void Session::ShowFrame(int frame) {
    const media::FrameSpan span = Span();
    frame = std::clamp(frame, span.first, span.last);
    if (!look_ || frame == frame_) return;
    frame_ = frame;
    look_->SetFrame(frame);
}

void Session::TakeChange() {
    Values now = ValuesOf(look_->Op());
    if (now != values_) {
        values_ = std::move(now);
        ++version_;
        store_.Clear();
    }
    emit Changed();
    Request();
}

int Session::Divisor() const {
    if (!look_->Steps().StepOpen() || fullTime_ <= kSlow) return 1;
    return fullTime_ <= 4.0 * kSlow ? 2 : 4;
}

void Session::Request() {
    if (const ShotPtr shot = store_.Find(frame_))
        emit Shown(shot);
    else if (!Playing())
        Ask(frame_);
}

void Session::Ask(int frame) {
    const int divisor = Divisor();
    const bool asked = asked_.frame == frame && asked_.version == version_ && asked_.divisor == divisor;
    if (asked && renderer_->Busy()) return;
    asked_ = {frame, version_, divisor, look_->Steps().StepOpen(), {}};
    Order order = asked_;
    order.values = values_;
    renderer_->Ask(std::move(order));
}

void Session::TakeShot(const ShotPtr& shot) {
    if (sender() != renderer_.get()) return; // of a tool that has been replaced
    const bool current = shot->version == version_;
    if (!shot->problem.empty()) {
        Play(false);
        emit Problem(QString::fromStdString(shot->problem));
        return;
    }
    if (shot->divisor == 1) fullTime_ = shot->milliseconds;
    if (current && shot->divisor == 1) store_.Enter(shot);
    if (shot->frame == frame_) emit Shown(shot);
    if (current && shot->written) {
        Restore(look_->Op(), *shot->written);
        values_ = ValuesOf(look_->Op());
        emit Changed();
    }
    if (Playing()) AskAhead();
}

void Session::Play(bool on) {
    if (on == Playing() || (on && Span().first == Span().last)) return;
    if (on)
        player_.start();
    else
        player_.stop();
    emit PlayingChanged(on);
    if (on)
        AskAhead();
    else if (look_)
        Request();
}

/// The next frame that is not there yet is rendered, for as long as there is room.
void Session::AskAhead() {
    const media::FrameSpan span = Span();
    const int count = span.last - span.first + 1;
    for (int i = 0; i < count; ++i) {
        const int frame = span.first + (frame_ - span.first + i) % count;
        if (store_.Find(frame)) continue;
        if (i < 2 || !store_.Full()) Ask(frame);
        return;
    }
}

void Session::Advance() {
    const media::FrameSpan span = Span();
    const int next = frame_ < span.last ? frame_ + 1 : span.first;
    if (store_.Find(next))
        ShowFrame(next);
    else if (!Rendering())
        AskAhead();
}

} // namespace view
