#include "media/FrameCache.h"

#include <algorithm>
#include <iterator>

namespace media {

const Picture* FrameCache::Find(int frame) {
    const auto found =
        std::find_if(pictures_.begin(), pictures_.end(), [&](const auto& p) { return p.first == frame; });
    if (found == pictures_.end()) return nullptr;
    pictures_.splice(pictures_.begin(), pictures_, found);
    return &found->second;
}

const Picture& FrameCache::Enter(int frame, Picture picture) {
    used_ += picture.image->Bytes();
    pictures_.emplace_front(frame, std::move(picture));
    while (used_ > room_ && pictures_.size() > 1) {
        used_ -= pictures_.back().second.image->Bytes();
        pictures_.pop_back();
    }
    return pictures_.front().second;
}

} // namespace media
