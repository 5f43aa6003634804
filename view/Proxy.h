#pragma once

#include "media/Feeds.h"

#include <atomic>
#include <list>
#include <mutex>

namespace view {

/// Stands between a clip and an image input, and gives the clip's pictures at a half or a quarter of their
/// size while a drag lasts.
class Proxy : public host::ImageProvider {
public:
    explicit Proxy(media::ClipFeed& feed) : feed_(feed) {}

    /// Sides are divided by it from now on; 1 gives the clip's own pictures.
    void SetDivisor(int divisor) { divisor_ = divisor; }

    host::Image* ImageAt(double time) override;

private:
    struct Small {
        int frame, divisor;
        std::shared_ptr<host::Image> image;
    };

    media::ClipFeed& feed_;
    std::atomic<int> divisor_ = 1;
    std::mutex mutex_;
    std::list<Small> kept_; ///< the one used last comes first
};

} // namespace view
