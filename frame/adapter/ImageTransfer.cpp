#include "frame/adapter/ImageTransfer.h"

#include "frame/ImageXfmK7.h"
#include "frame/PluginK7.h"

#include <algorithm>

namespace k7 {

namespace {

constexpr int kFull = 65535;

u16 WordIn(std::int32_t h) {
    return static_cast<u16>(std::clamp(h, 0, kFull) >> 1);
}

std::int32_t WordOut(u16 k) {
    return std::min(k << 1 | k >> 14, kFull);
}

void Decode(const host::Image& source, K7Image& to) {
    const host::Image::Plane& plane0 = source.PlaneAccess[0];
    const host::Image::Plane& plane1 = source.PlaneAccess[1];
    host::Pixel pixel;
    for (int y = 0; y < source.Height; ++y) {
        const std::byte* at0 = plane0.Row(y);
        const std::byte* at1 = plane1.Row(y);
        u16* word = to.Rows[y];
        for (int x = 0; x < source.Width; ++x, at0 += plane0.Step, at1 += plane1.Step, word += 4) {
            source.Read(&pixel, at0, at1);
            word[0] = WordIn(pixel.Red);
            word[1] = WordIn(pixel.Green);
            word[2] = WordIn(pixel.Blue);
            word[3] = WordIn(pixel.Alpha);
        }
    }
}

bool Fill(const host::Image& source, K7Image& target, PluginK7* core) {
    if (source.Width == target.Width && source.Height == target.Height) {
        Decode(source, target);
    } else {
        const std::unique_ptr<K7Image> decoded = K7Image::Make(source.Width, source.Height);
        if (!decoded) return false;
        Decode(source, *decoded);
        ImageXfmK7 resampler;
        resampler.SetFilter(ImageXfmK7::kCubic);
        resampler.SetDispatch(core, &ImageXfmK7::RunExternalChunks);
        if (!resampler.Transfer(decoded.get(), &target)) return false;
    }
    target.AspectX = source.AspectX;
    target.AspectY = source.AspectY;
    return true;
}

std::unique_ptr<K7Image> NewImage(const host::Image* source, int width, int height, PluginK7* core) {
    if (!source) return nullptr;
    std::unique_ptr<K7Image> image = K7Image::Make(width, height);
    if (!image || !Fill(*source, *image, core)) return nullptr;
    return image;
}

} // namespace

std::unique_ptr<K7Image> HostToK7Image(const host::Image* source) {
    return source ? NewImage(source, source->Width, source->Height, nullptr) : nullptr;
}

std::unique_ptr<K7Image> HostToK7Image(const host::Image* source, const K7Image& like, PluginK7* core) {
    return NewImage(source, like.Width, like.Height, core);
}

bool HostIntoK7Image(const host::Image* source, K7Image& target) {
    return source && Fill(*source, target, nullptr);
}

host::Image* K7ImageToHost(const host::Image& like, const K7Image& source) {
    host::Image* image = host::Image::NewImage({{host::kTagImageLike, &like}});
    if (!image) return nullptr;
    const host::Image::Plane& plane0 = image->PlaneAccess[0];
    const host::Image::Plane& plane1 = image->PlaneAccess[1];
    host::Pixel pixel;
    for (int y = 0; y < source.Height; ++y) {
        std::byte* at0 = plane0.Row(y);
        std::byte* at1 = plane1.Row(y);
        const u16* word = source.Rows[y];
        for (int x = 0; x < source.Width; ++x, at0 += plane0.Step, at1 += plane1.Step, word += 4) {
            pixel.Red = WordOut(word[0]);
            pixel.Green = WordOut(word[1]);
            pixel.Blue = WordOut(word[2]);
            pixel.Alpha = WordOut(word[3]);
            image->Write(&pixel, at0, at1);
        }
    }
    return image;
}

} // namespace k7
