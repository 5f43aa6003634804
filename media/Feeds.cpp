#include "media/Feeds.h"

#include "media/Errors.h"
#include "media/PictureDepth.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace media {
namespace {

int FrameOf(double time) {
    if (std::isnan(time)) return 0;
    return static_cast<int>(std::clamp(std::floor(time), -2147483648.0, 2147483647.0));
}

} // namespace

host::Image* Feed::ImageAt(double time) {
    std::string error;
    try {
        return Give(time);
    } catch (const FrameError& fault) {
        error = fault.what();
    } catch (const std::bad_alloc&) {
        error = "there is not enough memory for a picture";
    }
    const std::lock_guard lock(mutex_);
    if (error_.empty()) error_ = error;
    return nullptr;
}

std::string Feed::TakeError() {
    const std::lock_guard lock(mutex_);
    return std::exchange(error_, {});
}

host::Image* ClipFeed::Give(double time) {
    std::shared_ptr<host::Image> image = clip_->At(FrameOf(time)).image;
    if (depth_) image = AtLeast(std::move(image), *depth_);
    image->Retain();
    return image.get();
}

host::Image* ToolFeed::Give(double time) {
    const auto found =
        std::find_if(kept_.begin(), kept_.end(), [&](const auto& frame) { return frame.first == time; });
    if (found != kept_.end()) {
        kept_.splice(kept_.begin(), kept_, found);
    } else {
        // A tool that looks at frames other than the one in progress will do so again.
        if (next_.FrameTime() != time) room_ = kMostKept;
        host::Request request(time);
        operator_.Render(&request);
        if (operator_.AbortFlag) return nullptr;
        auto* image = dynamic_cast<host::Image*>(request.OutputData(operator_.Outputs().front()));
        if (!image) throw FrameError(operator_.Name + " produced no picture, perhaps because memory ran out");
        image->Retain();
        kept_.emplace_front(time, host::Ref<host::Image>(image));
        if (kept_.size() > room_) kept_.pop_back();
    }
    host::Image* image = kept_.front().second.get();
    image->Retain();
    return image;
}

} // namespace media
