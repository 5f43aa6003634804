#pragma once

#include "host/Operator.h"
#include "media/Clip.h"

#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

namespace media {

/// The source of an image input of a tool, and why it had no picture.
class Feed : public host::ImageProvider {
public:
    host::Image* ImageAt(double time) final;
    /// Why the first picture since the last call failed; empty if none did.
    std::string TakeError();

protected:
    /// The picture at a time, with a reference for the caller. Throws FrameError; null if the frame is
    /// aborted.
    virtual host::Image* Give(double time) = 0;

private:
    std::mutex mutex_;
    std::string error_;
};

/// A clip, which may feed several tools.
class ClipFeed : public Feed {
public:
    explicit ClipFeed(std::shared_ptr<Clip> clip) : clip_(std::move(clip)) {}
    /// Another feed from the same clip.
    ClipFeed(const ClipFeed& other) : clip_(other.clip_), depth_(other.depth_) {}

    const std::shared_ptr<Clip>& Source() const { return clip_; }
    /// From now on pictures have a depth that also holds the values of this one.
    void Deepen(host::Depth depth) { depth_ = depth; }

protected:
    host::Image* Give(double time) override;

private:
    const std::shared_ptr<Clip> clip_;
    std::optional<host::Depth> depth_;
};

/// The frames of a tool as the main picture of the next. The last ones are kept, so that none is computed
/// twice in a forward run: one, or as many as the next tool reads at other times.
class ToolFeed : public Feed {
public:
    /// From a tool to the next one.
    ToolFeed(host::Operator& from, const host::Operator& to) : operator_(from), next_(to) {}

    /// Drops the frames that are kept. Not to be called while one is being read.
    void Forget() { kept_.clear(); }

protected:
    host::Image* Give(double time) override;

private:
    static constexpr std::size_t kMostKept = 3;

    host::Operator& operator_;
    const host::Operator& next_;
    std::size_t room_ = 1;
    std::list<std::pair<double, host::Ref<host::Image>>> kept_; ///< the last used comes first
};

} // namespace media
