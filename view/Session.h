#pragma once

#include "view/FrameStore.h"
#include "view/Look.h"
#include "view/Renderer.h"

#include <QTimer>

#include <memory>
#include <string>
#include <vector>

namespace view {

/// A clip, a tool, and the frame that is shown: what the window works on. It sees to it that the frame is
/// rendered whenever something changes, and keeps those that are done.
class Session : public QObject {
    Q_OBJECT

public:
    explicit Session(QObject* parent = nullptr);

    /// A tool on clips, as `k7 render -i` takes them. The old ones stay where this throws.
    void Open(host::Registry& entry, const std::vector<std::string>& links);

    Look* CurrentLook() const { return look_.get(); }
    const std::vector<std::string>& Links() const { return links_; }
    media::FrameSpan Span() const { return renderer_ ? renderer_->Span() : media::FrameSpan{}; }
    int Frame() const { return frame_; }
    FrameStore& Store() { return store_; }
    bool Playing() const { return player_.isActive(); }
    bool Rendering() const { return renderer_ && renderer_->Busy(); }

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

    std::unique_ptr<Look> look_;
    std::unique_ptr<Renderer> renderer_;
    std::vector<std::string> links_;
    FrameStore store_;
    Values values_;
    unsigned version_ = 0;
    int frame_ = 0;
    double fullTime_ = 0.0; ///< milliseconds of the last frame in full size
    Order asked_;           ///< last, without values
    QTimer player_;
};

} // namespace view
