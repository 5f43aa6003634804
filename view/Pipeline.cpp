#include "view/Pipeline.h"

#include "host/Tags.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>

namespace view {

namespace {

/// The values asked for with what the frame has written in place of what it was given; nothing where it has
/// written nothing.
std::optional<std::vector<Values>> Written(std::vector<Values> asked, const std::vector<Values>& sent,
                                           const std::vector<Values>& now) {
    bool any = false;
    for (std::size_t tool = 0; tool < now.size(); ++tool)
        for (std::size_t i = 0; i < now[tool].size(); ++i)
            if (!now[tool][i].SameValue(sent[tool][i])) {
                asked[tool][i] = now[tool][i];
                any = true;
            }
    return any ? std::optional(std::move(asked)) : std::nullopt;
}

} // namespace

Pipeline::Pipeline(const Plan& plan) {
    if (plan.stages.empty())
        clip_ = std::make_shared<media::Clip>(plan.clip, media::Missing::Error, std::nullopt);
    else
        Link(plan);
    const media::Clip& clip = clip_ ? *clip_ : tools_->MainClip();
    span_ = clip.Span().value_or(media::FrameSpan{});
    if (tools_) tools_->SetExtent(span_);
}

void Pipeline::Link(const Plan& plan) {
    std::vector<host::Registry*> tools;
    std::vector<media::Links> links;
    for (const Plan::Stage& stage : plan.stages) {
        tools.push_back(stage.tool);
        links.push_back(stage.links);
    }
    links.front().insert(links.front().begin(), plan.clip);
    tools_ = std::make_unique<media::Stack>(tools);
    tools_->LinkAll(links, media::Missing::Error, "");
    PlaceProxies();
}

void Pipeline::PlaceProxies() {
    proxies_.clear();
    for (std::size_t i = 0; i < tools_->Size(); ++i)
        for (host::Input* input : tools_->Op(i).Inputs())
            if (media::ClipFeed* feed = tools_->Feeding(input)) {
                proxies_.push_back(std::make_unique<Proxy>(*feed));
                input->Connect(proxies_.back().get());
            }
}

/// New instances on the same clips.
void Pipeline::MakeAnew() {
    auto tools = std::make_unique<media::Stack>(*tools_);
    const std::lock_guard lock(mutex_);
    tools_ = std::move(tools);
    for (std::atomic<bool>* flag : tools_->AbortFlags()) *flag = aborted_;
    PlaceProxies();
    fresh_ = true;
    drawn_.reset();
}

void Pipeline::SetAborted(bool aborted) {
    const std::lock_guard lock(mutex_);
    aborted_ = aborted;
    if (tools_)
        for (std::atomic<bool>* flag : tools_->AbortFlags()) *flag = aborted;
}

std::vector<Values> Pipeline::ValuesNow() const {
    std::vector<Values> values;
    for (std::size_t i = 0; i < tools_->Size(); ++i) values.push_back(ValuesOf(tools_->Op(i)));
    return values;
}

/// The values of the tools that draw at random at their first frame and keep it.
std::vector<Values> Pipeline::Drawing(const std::vector<Values>& sent) const {
    std::vector<Values> drawing;
    for (std::size_t i = 0; i < sent.size(); ++i)
        if (tools_->Op(i).Class()->HasAttr(host::kTagRegCarriesOver)) drawing.push_back(sent[i]);
    return drawing;
}

void Pipeline::Set(const Order& order) {
    for (const auto& proxy : proxies_) proxy->SetDivisor(order.divisor);
    for (std::size_t i = 0; i < tools_->Size(); ++i)
        Restore(tools_->Op(i), Scaled(tools_->Op(i), order.values[i], order.divisor));
    tools_->ChooseDepth(media::WorkingDepth::OfPicture, order.frame);
}

/// What the tools are given. What those above the first that has changed have rendered is used again.
std::vector<Values> Pipeline::Prepare(const Order& order) {
    Set(order);
    std::vector<Values> sent = ValuesNow();
    const std::vector<Values> drawing = Drawing(sent);
    const bool same = drawn_ == drawing || drawing.empty();
    if (!same && !fresh_ && !order.patient) {
        MakeAnew();
        Set(order);
    }
    if (!same && !fresh_) drawn_.reset();
    const auto changed = std::mismatch(sent.begin(), sent.end(), sent_.begin(), sent_.end()).first;
    const bool anew = order.divisor != divisor_;
    tools_->Forget(anew ? 0 : static_cast<std::size_t>(changed - sent.begin()));
    divisor_ = order.divisor;
    sent_ = sent;
    return sent;
}

void Pipeline::RenderTo(Shot& shot, const Order& order) {
    if (!tools_) {
        shot.before = shot.after = clip_->At(order.frame).image;
        shot.exact = true;
        return;
    }
    const std::vector<Values> sent = Prepare(order);
    const bool first = std::exchange(fresh_, false);
    shot.before = tools_->MainClip().At(order.frame).image;
    shot.after = tools_->Render(order.frame);
    const std::vector<Values> drawing = Drawing(sent);
    if (first && shot.after && order.divisor == 1) drawn_ = drawing;
    shot.exact = order.divisor == 1 && (drawing.empty() || drawn_ == drawing);
    if (order.divisor == 1) shot.written = Written(order.values, sent, ValuesNow());
}

std::shared_ptr<Shot> Pipeline::Render(const Order& order) {
    auto shot = std::make_shared<Shot>();
    shot->frame = order.frame;
    shot->version = order.version;
    shot->divisor = order.divisor;
    const auto start = std::chrono::steady_clock::now();
    try {
        RenderTo(*shot, order);
        if (!shot->after) return nullptr; // aborted
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
