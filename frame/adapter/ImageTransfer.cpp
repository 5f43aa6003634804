#include "frame/adapter/ImageTransfer.h"

#include "baselib/Buffer.h"
#include "frame/ImageXfmK7.h"
#include "frame/PluginK7.h"
#include "library/Chunks.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>

namespace k7 {

namespace {

u16 SampleIn(u16 h) {
    return static_cast<u16>(h >> 1);
}

u16 SampleOut(u16 k) {
    constexpr int full = 65535;
    return static_cast<u16>(std::min(k << 1 | k >> 14, full));
}

constexpr float kWhite = kFullScale;
constexpr float kMostHalf = 65504.0f;

/// Onto the scale of words. NaN is black; infinities are the largest half, with their sign. By masks, which
/// go through vector registers where branches do not.
float SampleIn(float stored) {
    constexpr std::uint32_t infinity = 0x7f800000, sign = 0x80000000;
    const auto bits = std::bit_cast<std::uint32_t>(stored);
    const std::uint32_t magnitude = bits & ~sign;
    const std::uint32_t finite = 0u - static_cast<std::uint32_t>(magnitude < infinity);
    const std::uint32_t endless = 0u - static_cast<std::uint32_t>(magnitude == infinity);
    const std::uint32_t held = (bits & sign) | std::bit_cast<std::uint32_t>(kMostHalf);
    return std::bit_cast<float>((bits & finite) | (held & endless)) * kWhite;
}

float SampleOut(float sample) {
    return sample / kWhite;
}

/// `to` has the size of `source`.
template <class Sample>
void Decode(const host::Image& source, const PictureK7<Sample>& to) {
    RunImageRows(source.Height, [&](int first, int last) {
        for (int y = first; y <= last && !AbortRequested(); ++y) {
            Sample* const row = to.Rows[y];
            source.ReadRow(y, row);
            std::transform(row, row + to.RowBytes() / sizeof(Sample), row,
                           [](Sample stored) { return SampleIn(stored); });
        }
    });
}

/// False where allocation fails.
template <class Sample>
bool Encode(const PictureK7<Sample>& source, host::Image& to) {
    std::atomic<bool> complete = true;
    RunImageRows(source.Height, [&](int first, int last) {
        if (first > last) return;
        const Buffer<Sample> row(static_cast<std::size_t>(source.Width) * source.Channels,
                                 "adapter/ImageTransfer");
        if (!row) complete = false;
        for (int y = first; y <= last && row && !AbortRequested(); ++y) {
            const Sample* from = source.Rows[y];
            for (Sample& stored : row) stored = SampleOut(*from++);
            to.WriteRow(y, row.data());
        }
    });
    return complete;
}

template <class Sample>
bool Fill(const host::Image& source, PictureK7<Sample>& target, PluginK7* core) {
    if (source.Width == target.Width && source.Height == target.Height) {
        Decode(source, target);
    } else {
        const auto decoded = PictureK7<Sample>::Make(source.Width, source.Height);
        if (!decoded) return false;
        Decode(source, *decoded);
        ImageXfmK7 resampler;
        resampler.SetFilter(ImageXfmK7::kCubic);
        resampler.SetDispatch(core, &ImageXfmK7::RunExternalChunks);
        if (!resampler.Transfer<Sample>(decoded.get(), &target)) return false;
    }
    if (AbortRequested()) return false; // the picture may lack rows
    target.AspectX = source.AspectX;
    target.AspectY = source.AspectY;
    return true;
}

template <class Sample>
std::unique_ptr<PictureK7<Sample>> NewImage(const host::Image* source, int width, int height,
                                            PluginK7* core) {
    if (!source) return nullptr;
    auto image = PictureK7<Sample>::Make(width, height);
    if (!image || !Fill(*source, *image, core)) return nullptr;
    return image;
}

} // namespace

template <class Sample>
std::unique_ptr<PictureK7<Sample>> HostToK7Image(const host::Image* source) {
    return source ? NewImage<Sample>(source, source->Width, source->Height, nullptr) : nullptr;
}

template <class Sample>
std::unique_ptr<PictureK7<Sample>> HostToK7Image(const host::Image* source, const PictureK7<Sample>& like,
                                                 PluginK7* core) {
    return NewImage<Sample>(source, like.Width, like.Height, core);
}

template <class Sample>
bool HostIntoK7Image(const host::Image* source, PictureK7<Sample>& target) {
    return source && Fill(*source, target, nullptr);
}

template <class Sample>
host::Image* K7ImageToHost(const host::Image& like, const PictureK7<Sample>& source) {
    host::Ref<host::Image> image(host::Image::NewImage({{host::kTagImageLike, &like}}));
    return image && Encode(source, *image) ? image.release() : nullptr;
}

template std::unique_ptr<K7Image> HostToK7Image(const host::Image*);
template std::unique_ptr<FloatImageK7> HostToK7Image(const host::Image*);
template std::unique_ptr<K7Image> HostToK7Image(const host::Image*, const K7Image&, PluginK7*);
template std::unique_ptr<FloatImageK7> HostToK7Image(const host::Image*, const FloatImageK7&, PluginK7*);
template bool HostIntoK7Image(const host::Image*, K7Image&);
template bool HostIntoK7Image(const host::Image*, FloatImageK7&);
template host::Image* K7ImageToHost(const host::Image&, const K7Image&);
template host::Image* K7ImageToHost(const host::Image&, const FloatImageK7&);

} // namespace k7
