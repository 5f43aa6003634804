#include "ofx/Clips.h"

#include "host/Application.h"
#include "ofx/Errands.h"
#include "ofx/Names.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace ofx {

using host::Depth;
using host::Image;

Box Common(const Box& a, const Box& b) {
    return {std::max(a.x1, b.x1), std::max(a.y1, b.y1), std::min(a.x2, b.x2), std::min(a.y2, b.y2)};
}

namespace {

/// Whether a picture of this size can be worked on; hosts give endless regions as the largest numbers.
bool IsSound(const Box& box) {
    constexpr std::int64_t most = 65536;
    const std::int64_t width = static_cast<std::int64_t>(box.x2) - box.x1;
    const std::int64_t height = static_cast<std::int64_t>(box.y2) - box.y1;
    return width > 0 && height > 0 && width <= most && height <= most;
}

} // namespace

HostPicture::HostPicture(Clip clip, double time) {
    const Status status = TheHost().effect->clipGetImage(clip, time, nullptr, &set_);
    if (status == kErrMemory) throw Failure(status, "out of memory");
    if (status != kOk || !set_) throw Failure(kFailed, "there is no picture at this frame");
    try {
        Read();
    } catch (...) {
        TheHost().effect->clipReleaseImage(set_);
        throw;
    }
}

HostPicture::~HostPicture() {
    TheHost().effect->clipReleaseImage(set_);
}

void HostPicture::Read() {
    const Properties image(set_);
    const std::string stored = image.Get(kPixelDepth, "");
    const std::string components = image.Get(kComponents, "");
    struct Format {
        const char* name;
        Depth depth;
        std::size_t bytes;
    };
    static constexpr Format formats[] = {{kDepthByte, Depth::Int8, 1},
                                         {kDepthShort, Depth::Int16, 2},
                                         {kDepthHalf, Depth::Half, 2},
                                         {kDepthFloat, Depth::Float, 4}};
    const auto* format = std::find_if(std::begin(formats), std::end(formats),
                                      [&](const Format& f) { return stored == f.name; });
    if (format == std::end(formats) || (components != kComponentsRgba && components != kComponentsRgb))
        throw Failure(kImageFormat, "pictures must be RGB or RGBA in byte, short, half or float");
    depth = format->depth;
    sampleBytes = format->bytes;
    channels = components == kComponentsRgba ? 4 : 3;
    bounds = image.Get(kImageBounds, Box{});
    const Box whole = image.Get(kImageRegion, Box{});
    region = IsSound(whole) ? whole : bounds;
    rowBytes = image.Get(kImageRowBytes, 0);
    aspect = image.Get(kPixelAspect, 1.0);
    data_ = static_cast<std::byte*>(image.GetPointer(kImageData));
    if (!data_ || !IsSound(bounds)) throw Failure(kFailed, "the picture of this frame is empty");
}

std::byte* HostPicture::At(int x, int y) const {
    return data_ + (y - bounds.y1) * rowBytes +
           (x - bounds.x1) * static_cast<std::ptrdiff_t>(channels * static_cast<int>(sampleBytes));
}

namespace {

/// Rows are divided into bands of this many, enough work for a thread.
constexpr int kBand = 64;

void ForRows(int first, int end, const std::function<void(int y)>& row) {
    const int bands = (end - first + kBand - 1) / kBand;
    host::GetApp()->RunOnThreads(bands, [&](long band) {
        const int from = first + static_cast<int>(band) * kBand;
        for (int y = from; y < std::min(from + kBand, end); ++y) row(y);
    });
}

/// Alpha of a picture without alpha: 1.0 in each depth.
void PutOpaque(std::byte* at, Depth depth) {
    const float whole = 1.0f;
    const std::uint16_t half = 0x3c00, word = 0xffff;
    if (depth == Depth::Float) std::memcpy(at, &whole, sizeof whole);
    if (depth == Depth::Half) std::memcpy(at, &half, sizeof half);
    if (depth == Depth::Int16) std::memcpy(at, &word, sizeof word);
    if (depth == Depth::Int8) *at = std::byte{0xff};
}

/// Pixels of one row between pictures of the same depth with three or four channels.
void CopyPixels(const std::byte* from, int fromChannels, std::byte* to, int toChannels, int count,
                std::size_t bytes, Depth depth) {
    const std::size_t step = static_cast<std::size_t>(fromChannels) * bytes;
    if (fromChannels == toChannels) {
        std::memcpy(to, from, static_cast<std::size_t>(count) * step);
        return;
    }
    for (int x = 0; x < count; ++x, from += step, to += static_cast<std::size_t>(toChannels) * bytes) {
        std::memcpy(to, from, 3 * bytes);
        if (toChannels == 4) PutOpaque(to + 3 * bytes, depth);
    }
}

void ClearPixels(std::byte* to, int count, const HostPicture& picture) {
    if (count > 0)
        std::memset(to, 0, static_cast<std::size_t>(count * picture.channels) * picture.sampleBytes);
}

Image* Placed(const HostPicture& picture, const Box& frame) {
    Image* image = Image::Make(frame.Width(), frame.Height(), picture.depth);
    if (!image) throw Failure(kErrMemory, "out of memory");
    const Box part = Common(frame, picture.bounds);
    const std::ptrdiff_t left = (part.x1 - frame.x1) * image->PlaneAccess[0].Step;
    if (part.Width() > 0)
        ForRows(part.y1, part.y2, [&](int y) {
            CopyPixels(picture.At(part.x1, y), picture.channels,
                       image->PlaneAccess[0].Row(y - frame.y1) + left, 4, part.Width(), picture.sampleBytes,
                       picture.depth);
        });
    return image;
}

} // namespace

const HostPicture& ClipFrames::At(double time) {
    std::unique_ptr<HostPicture>& picture = pictures_[time];
    if (!picture) OnHostThread([&] { picture = std::make_unique<HostPicture>(clip_, time); });
    return *picture;
}

Image* ClipFrames::ImageAt(double time) {
    try {
        const HostPicture& picture = At(time);
        const bool asItIs = picture.channels == 4 && picture.bounds == frame_;
        Image* image = asItIs ? Image::Over(picture.At(frame_.x1, frame_.y1), picture.rowBytes,
                                            frame_.Width(), frame_.Height(), picture.depth)
                              : Placed(picture, frame_);
        if (!image) throw Failure(kErrMemory, "out of memory");
        image->AspectX = picture.aspect;
        return image;
    } catch (const Failure& failure) {
        if (failure.status != kFailed) refusals_.Note(failure); // otherwise a time without a picture
        return nullptr;
    }
}

void WriteResult(const Image& result, const Box& frame, const HostPicture& to, const Box& window) {
    const Box target = Common(window, to.bounds);
    const Box part = Common(target, frame);
    if (part.Width() < 1 || part.Height() < 1) return Clear(to, window);
    const std::ptrdiff_t left = (part.x1 - frame.x1) * result.PlaneAccess[0].Step;
    ForRows(target.y1, target.y2, [&](int y) {
        if (y < part.y1 || y >= part.y2) return ClearPixels(to.At(target.x1, y), target.Width(), to);
        ClearPixels(to.At(target.x1, y), part.x1 - target.x1, to);
        CopyPixels(result.PlaneAccess[0].Row(y - frame.y1) + left, 4, to.At(part.x1, y), to.channels,
                   part.Width(), to.sampleBytes, to.depth);
        ClearPixels(to.At(part.x2, y), target.x2 - part.x2, to);
    });
}

void Clear(const HostPicture& picture, const Box& window) {
    const Box target = Common(window, picture.bounds);
    for (int y = target.y1; y < target.y2; ++y)
        ClearPixels(picture.At(target.x1, y), target.Width(), picture);
}

} // namespace ofx
