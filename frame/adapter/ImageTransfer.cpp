#include "frame/adapter/ImageTransfer.h"

#include "frame/ImageXfmK7.h"
#include "frame/PluginK7.h"
#include "library/Chunks.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace k7 {

namespace {

constexpr int kFull = 65535;

u16 WordIn(std::int32_t h) {
    return static_cast<u16>(std::clamp(h, 0, kFull) >> 1);
}

std::int32_t WordOut(u16 k) {
    return std::min(k << 1 | k >> 14, kFull);
}

constexpr float kWhite = kFullScale;
constexpr float kMostHalf = 65504.0f;

/// Onto the scale of words. NaN is black; infinities are the largest half, with their sign.
float FloatIn(float stored) {
    if (std::isnan(stored)) return 0.0f;
    if (std::isinf(stored)) stored = std::copysign(kMostHalf, stored);
    return stored * kWhite;
}

float FloatOut(float sample) {
    return sample / kWhite;
}

void Decode(const host::Image& source, K7Image& to) {
    const host::Image::Plane& plane0 = source.PlaneAccess[0];
    const host::Image::Plane& plane1 = source.PlaneAccess[1];
    host::Pixel pixel;
    for (int y = 0; y < source.Height && !AbortRequested(); ++y) {
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

void Decode(const host::Image& source, FloatImageK7& to) {
    for (int y = 0; y < source.Height && !AbortRequested(); ++y) {
        float* row = to.Rows[y];
        source.ReadRow(y, row);
        for (int i = 0; i < source.Width * to.Channels; ++i) row[i] = FloatIn(row[i]);
    }
}

void Encode(const K7Image& source, host::Image& to) {
    const host::Image::Plane& plane0 = to.PlaneAccess[0];
    const host::Image::Plane& plane1 = to.PlaneAccess[1];
    host::Pixel pixel;
    for (int y = 0; y < source.Height && !AbortRequested(); ++y) {
        std::byte* at0 = plane0.Row(y);
        std::byte* at1 = plane1.Row(y);
        const u16* word = source.Rows[y];
        for (int x = 0; x < source.Width; ++x, at0 += plane0.Step, at1 += plane1.Step, word += 4) {
            pixel.Red = WordOut(word[0]);
            pixel.Green = WordOut(word[1]);
            pixel.Blue = WordOut(word[2]);
            pixel.Alpha = WordOut(word[3]);
            to.Write(&pixel, at0, at1);
        }
    }
}

void Encode(const FloatImageK7& source, host::Image& to) {
    const std::size_t samples = static_cast<std::size_t>(source.Width) * source.Channels;
    std::vector<float> row(samples);
    for (int y = 0; y < source.Height && !AbortRequested(); ++y) {
        std::transform(source.Rows[y], source.Rows[y] + samples, row.begin(), FloatOut);
        to.WriteRow(y, row.data());
    }
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
    host::Image* image = host::Image::NewImage({{host::kTagImageLike, &like}});
    if (image) Encode(source, *image);
    return image;
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
