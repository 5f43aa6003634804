#pragma once

#include "media/PictureFile.h"

#include <cstddef>
#include <list>
#include <utility>

namespace media {

/// The most recent pictures, so that an effect that reads neighbouring frames does not decode a clip twice.
class FrameCache {
public:
    /// Holds at most `bytes` of pixels; the picture entered last stays in any case.
    explicit FrameCache(std::size_t bytes) : room_(bytes) {}

    /// The picture of a frame, which counts as used now; null if it is not cached.
    const Picture* Find(int frame);
    const Picture& Enter(int frame, Picture picture);

private:
    const std::size_t room_;
    std::size_t used_ = 0;
    std::list<std::pair<int, Picture>> pictures_; ///< most recently used first
};

} // namespace media
