#include "view/Session.h"

#include "media/PlugIns.h"

#include <algorithm>

namespace view {

namespace {

constexpr int kFramesPerSecond = 24;
constexpr double kSlow = 100.0; ///< milliseconds from which a drag shows smaller pictures

Plan PlanOf(const std::string& clip, const std::vector<Layer>& layers) {
    Plan plan{clip, {}};
    for (const Layer& layer : layers) {
        if (!layer.on) continue;
        media::Links links;
        for (const auto& [id, file] : layer.files)
            links.push_back(std::string(id).append(1, '=').append(file));
        plan.stages.push_back({&media::FindTool(layer.op->Class()->Id().Text()), links});
    }
    return plan;
}

} // namespace

Session::Session(QObject* parent) : QObject(parent) {
    player_.setInterval(1000 / kFramesPerSecond);
    player_.setTimerType(Qt::PreciseTimer);
    connect(&player_, &QTimer::timeout, this, &Session::Advance);
    connect(&renderer_, &Renderer::Done, this, &Session::TakeShot, Qt::QueuedConnection);
}

void Session::Open(host::Registry& tool, const std::vector<std::string>& links) {
    auto look = std::make_unique<Look>(tool);
    std::string clip;
    for (const std::string& link : links) {
        const auto [name, file] = media::SplitLink(link);
        if (name.empty())
            clip = file;
        else
            look->LinkFile(name, file);
    }
    look->MarkSaved();
    Plan plan = PlanOf(clip, look->Layers());
    auto pipeline = std::make_shared<Pipeline>(plan);
    Play(false);
    std::swap(look_, look);
    Take(std::move(pipeline), std::move(plan));
    state_ = StateOf(look_->Layers());
    connect(look_.get(), &Look::Changed, this, &Session::TakeChange);
    emit Opened(); // the old look is still there for those who let go of it now
    Request();
}

void Session::OpenClip(const std::string& clip) {
    Plan plan = PlanOf(clip, look_->Layers());
    auto pipeline = std::make_shared<Pipeline>(plan);
    Play(false);
    Take(std::move(pipeline), std::move(plan));
    emit Opened();
    Request();
}

void Session::Take(std::shared_ptr<Pipeline> pipeline, Plan plan) {
    pipeline_ = std::move(pipeline);
    const bool sameClip = plan.clip == plan_.clip;
    plan_ = std::move(plan);
    span_ = pipeline_->Span();
    store_.Clear();
    opened_ = ++version_;
    fullTime_ = 0.0;
    if (!sameClip) frame_ = (span_.first + span_.last) / 2;
    frame_ = std::clamp(frame_, span_.first, span_.last);
    look_->SetFrame(frame_);
}

void Session::ShowFrame(int frame) {
    const media::FrameSpan span = Span();
    frame = std::clamp(frame, span.first, span.last);
    if (!look_ || frame == frame_) return;
    frame_ = frame;
    look_->SetFrame(frame);
}

void Session::TakeChange() {
    StackState now = StateOf(look_->Layers());
    if (now != state_) {
        state_ = std::move(now);
        ++version_;
        store_.Clear();
    }
    Plan plan = PlanOf(plan_.clip, look_->Layers());
    if (plan != plan_) {
        plan_ = std::move(plan);
        try {
            pipeline_ = std::make_shared<Pipeline>(plan_);
        } catch (const std::exception& error) {
            pipeline_ = nullptr;
            emit Problem(QString::fromUtf8(error.what()));
        }
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
    if (!pipeline_) return;
    const int divisor = Divisor();
    const bool dragging = look_->Steps().StepOpen();
    const bool asked = asked_.frame == frame && asked_.version == version_ && asked_.divisor == divisor &&
                       asked_.patient == dragging;
    if (asked && renderer_.Busy()) return;
    asked_ = {frame, version_, divisor, dragging, nullptr, {}};
    Order order = asked_;
    order.pipeline = pipeline_;
    for (const LayerState& one : state_)
        if (one.layer.on) order.values.push_back(one.values);
    renderer_.Ask(std::move(order));
}

void Session::TakeShot(const ShotPtr& shot) {
    if (shot->version < opened_) return;
    const bool current = shot->version == version_;
    if (!shot->problem.empty()) {
        if (!current) return;
        Play(false);
        emit Problem(QString::fromStdString(shot->problem));
        return;
    }
    fullTime_ = shot->milliseconds * shot->divisor * shot->divisor;
    if (current && shot->exact) store_.Enter(shot);
    if (shot->frame == frame_) emit Shown(shot);
    if (current && shot->written) TakeWritten(*shot->written);
    if (Playing()) AskAhead();
}

/// Values that a frame has written into the controls of the tools that are on.
void Session::TakeWritten(const std::vector<Values>& written) {
    auto values = written.begin();
    for (const Layer& layer : look_->Layers())
        if (layer.on) Restore(*layer.op, *values++);
    state_ = StateOf(look_->Layers());
    emit Changed();
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
