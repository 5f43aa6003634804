#pragma once

#include "media/PictureFile.h"

namespace media::test {

/// A picture from a function pixel(x, y), row 0 at the bottom.
template <class PixelAt>
Picture MakePicture(int width, int height, PixelAt pixel, host::Depth depth = host::Depth::Int16,
                    int channels = 4) {
    Picture picture;
    picture.channels = channels;
    picture.image = Share(host::Image::Make(width, height, depth));
    const host::Image::Plane& plane = picture.image->PlaneAccess[0];
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const host::Pixel value = pixel(x, y);
            picture.image->Write(&value, plane.Row(y) + x * plane.Step, nullptr);
        }
    return picture;
}

/// Noise, the same for the same arguments; grey if there is no colour.
inline Picture MakeNoise(int width, int height, host::Depth depth = host::Depth::Int16, int channels = 4) {
    std::uint32_t state = 12345;
    const auto next = [&] { return static_cast<int>((state = state * 1664525u + 1013904223u) >> 16); };
    const auto noise = [&](int, int) {
        host::Pixel pixel{next(), next(), next(), next()};
        if (channels < 3) pixel.Green = pixel.Blue = pixel.Red;
        return pixel;
    };
    return MakePicture(width, height, noise, depth, channels);
}

inline host::Pixel At(const host::Image& image, int x, int y) {
    host::Pixel pixel;
    image.Read(&pixel, image.PlaneAccess[0].Row(y) + x * image.PlaneAccess[0].Step, nullptr);
    return pixel;
}

} // namespace media::test
