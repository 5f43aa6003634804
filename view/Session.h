#pragma once

#include "view/FrameStore.h"
#include "view/Look.h"
#include "view/Renderer.h"

#include <QTimer>

#include <memory>
#include <string>
#include <vector>

namespace view {

/// A clip, a stack of tools, and the frame that is shown: what the window works on. It sees to it that the
/// frame is rendered whenever something changes, and keeps those that are done.
class Session : public QObject {
    Q_OBJECT

public:
    explicit Session(QObject* parent = nullptr);

    // What was there stays where these throw.
    /// A new look of one tool on clips, as `k7 render -i` takes them.
    void Open(host::Registry& tool, const std::vector<std::string>& links);
    /// Another main picture for the look as it is.
    void OpenClip(const std::string& clip);

    Look* CurrentLook() const { return look_.get(); }
    const std::string& Clip() const { return plan_.clip; }
    /// The tools that are on, as `k7 render` is given them.
    const Plan& Tools() const { return plan_; }
    media::FrameSpan Span() const { return span_; }
    int Frame() const { return frame_; }
    FrameStore& Store() { return store_; }
    bool Playing() const { return player_.isActive(); }
    bool Rendering() const { return renderer_.Busy(); }

    void ShowFrame(int frame); ///< clamped to the clip
    void Play(bool on);

signals:
    void Opened();
    void Changed(); ///< a control, or the frame
    void Shown(view::ShotPtr shot);
    void Problem(const QString& why);
    void PlayingChanged(bool on);

private:
    void TakeChange();
    void TakeShot(const ShotPtr& shot);
    void Request();
    void Ask(int frame);
    void AskAhead();
    void Advance();
    int Divisor() const;
    void Take(std::shared_ptr<Pipeline> pipeline, Plan plan);
    void TakeWritten(const std::vector<Values>& written);

    std::unique_ptr<Look> look_;
    Plan plan_;
    std::shared_ptr<Pipeline> pipeline_; ///< of the plan; null where it cannot be
    media::FrameSpan span_;
    FrameStore store_;
    StackState state_;
    unsigned version_ = 0, opened_ = 0; ///< of the look; when the clip was opened
    int frame_ = 0;
    double fullTime_ = 0.0; ///< milliseconds that a frame in full size takes, by the last one
    Order asked_;           ///< last, without values
    QTimer player_;
    Renderer renderer_;
};

} // namespace view
