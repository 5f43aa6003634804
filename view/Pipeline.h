#pragma once

#include "media/Stack.h"
#include "view/Proxy.h"
#include "view/Shot.h"

#include <mutex>

namespace view {

/// What a frame is rendered by: the tools that are on, and their files.
struct Plan {
    struct Stage {
        host::Registry* tool;
        media::Links links;
        bool operator==(const Stage&) const = default;
    };
    std::string clip; ///< the main picture, as `k7 render -i` takes it
    std::vector<Stage> stages;

    bool operator==(const Plan&) const = default;
};

/// Instances of the tools of a plan, linked to their clips. Without a tool the clip is shown as it is. One
/// thread at a time renders; any may abort.
class Pipeline {
public:
    /// Throws media::UsageError, media::FrameError, std::runtime_error.
    explicit Pipeline(const Plan& plan);

    media::FrameSpan Span() const { return span_; }

    /// Null after an abort. What goes wrong stands in the shot.
    std::shared_ptr<Shot> Render(const Order& order);
    /// Raises or lowers the flags that stop a frame.
    void SetAborted(bool aborted);

private:
    void Link(const Plan& plan);
    void PlaceProxies();
    void MakeAnew();
    void Set(const Order& order);
    std::vector<Values> Prepare(const Order& order);
    std::vector<Values> Drawing(const std::vector<Values>& sent) const;
    std::vector<Values> ValuesNow() const;
    void RenderTo(Shot& shot, const Order& order);

    std::mutex mutex_;                    ///< guards the exchange of tools
    std::unique_ptr<media::Stack> tools_; ///< null without a tool
    bool aborted_ = false;
    std::shared_ptr<media::Clip> clip_; ///< null where the tools have it
    std::vector<std::unique_ptr<Proxy>> proxies_;
    media::FrameSpan span_;
    std::vector<Values> sent_; ///< of the last frame
    int divisor_ = 1;
    bool fresh_ = true; ///< the tools have not rendered yet
    /// Values for which the tools draw what those of `k7 render` would, where some draw at random.
    std::optional<std::vector<Values>> drawn_;
};

} // namespace view
