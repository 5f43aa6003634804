#include "view/Proxy.h"

#include "media/Shrink.h"

#include <algorithm>

namespace view {

using host::Image;

namespace {

constexpr std::size_t kKept = 8; ///< pictures; tools that follow motion look at a few neighbours

} // namespace

Image* Proxy::ImageAt(double time) {
    const int divisor = divisor_;
    if (divisor == 1) return feed_.ImageAt(time);
    const int frame = static_cast<int>(time);
    const std::lock_guard lock(mutex_);
    auto found = std::find_if(kept_.begin(), kept_.end(), [&](const Small& small) {
        return small.frame == frame && small.divisor == divisor;
    });
    if (found == kept_.end()) {
        const host::Ref<Image> whole(feed_.ImageAt(time));
        Image* small = whole ? media::Shrunk(*whole, divisor) : nullptr;
        if (!small) return nullptr;
        kept_.push_front({frame, divisor, media::Share(small)});
        if (kept_.size() > kKept) kept_.pop_back();
        found = kept_.begin();
    }
    found->image->Retain();
    return found->image.get();
}

} // namespace view
