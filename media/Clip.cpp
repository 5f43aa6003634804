#include "media/Clip.h"

#include "media/Errors.h"
#include "media/Shrink.h"
#include "media/Words.h"

#include <algorithm>
#include <utility>

namespace media {
namespace {

/// Room for three frames of 4096 x 3072 in 32-bit float.
constexpr std::size_t kCacheBytes = std::size_t{640} << 20;

} // namespace

Aspect ParseAspect(const std::string& text) {
    std::vector<double> sides;
    for (const std::string& piece : Split(text, ':')) sides.push_back(ParseNumber(piece).value_or(0));
    const auto good = [](double side) { return side > 0 && side < 1e6; };
    if (sides.size() != 2 || !good(sides[0]) || !good(sides[1]))
        throw UsageError("'" + text + "' is not a pixel aspect: write X:Y");
    return {sides[0], sides[1]};
}

Clip::Clip(const std::string& name, Missing missing, std::optional<Aspect> aspect, const ReadOptions& options)
    : source_(OpenClip(name, options))
    , missing_(missing)
    , aspect_(aspect)
    , proxy_(options.proxy)
    , cache_(kCacheBytes) {}

std::optional<FrameSpan> Clip::Span() const {
    const std::vector<int> frames = source_->Frames();
    if (frames.empty()) return std::nullopt;
    return FrameSpan{frames.front(), frames.back()};
}

Picture Clip::Black() const {
    const std::vector<int> frames = source_->Frames();
    if (frames.empty()) throw FrameError(source_->NameOf(0) + ": this clip has no frames");
    Picture picture = source_->Read(frames.front());
    const host::Image& like = *picture.image;
    std::shared_ptr<host::Image> black = Share(host::Image::Make(like.Width, like.Height, like.PixelDepth));
    if (!black)
        throw FrameError(source_->NameOf(frames.front()) + ": there is not enough memory for an empty frame");
    black->AspectX = like.AspectX;
    black->AspectY = like.AspectY;
    picture.image = std::move(black);
    picture.path.clear(); // other channels of that frame do not belong to this one
    return picture;
}

Picture Clip::ReadOrReplace(int frame) const {
    if (!source_->IsSequence() || source_->Has(frame)) return source_->Read(frame);
    if (missing_ == Missing::Black) return Black();
    if (missing_ == Missing::Hold) {
        const std::vector<int> frames = source_->Frames();
        const auto later = std::upper_bound(frames.begin(), frames.end(), frame);
        if (later != frames.begin()) return source_->Read(*std::prev(later));
    }
    throw FrameError(source_->NameOf(frame) + ": there is no such frame");
}

Picture Clip::Load(int frame) const {
    Picture picture = ReadOrReplace(frame);
    if (aspect_) {
        picture.image->AspectX = aspect_->x;
        picture.image->AspectY = aspect_->y;
    }
    if (proxy_ > 1) {
        picture.image = Share(Shrunk(*picture.image, proxy_));
        if (!picture.image) throw FrameError(NameOf(frame) + ": there is not enough memory for its proxy");
        picture.path.clear(); // other channels of the file have another size
    }
    return picture;
}

/// Threads that want the same frame wait for the first of them to decode it; different frames are decoded in
/// parallel.
Picture Clip::At(int frame) {
    if (!source_->IsSequence()) frame = 0;
    std::unique_lock lock(mutex_);
    if (const Picture* kept = cache_.Find(frame)) return *kept;
    if (const auto found = loading_.find(frame); found != loading_.end()) {
        const std::shared_future<Picture> other = found->second;
        lock.unlock();
        return other.get();
    }
    std::packaged_task<Picture()> load([&] { return Load(frame); });
    const std::shared_future<Picture> own = loading_[frame] = load.get_future().share();
    lock.unlock();
    load();
    lock.lock();
    loading_.erase(frame);
    return cache_.Enter(frame, own.get()); // rethrows what decoding threw
}

} // namespace media
