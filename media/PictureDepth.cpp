#include "media/PictureDepth.h"

#include "media/PictureFile.h"

#include <cmath>
#include <new>
#include <vector>

namespace media {
namespace {

using host::Depth;
using host::Image;

/// Reads each row of a picture, calls work(rgba) for each pixel, and writes the row into the target.
template <class Work>
void Pass(const Image& from, Image& to, Work&& work) {
    std::vector<float> row(static_cast<std::size_t>(from.Width) * 4);
    for (int y = 0; y < from.Height; ++y) {
        from.ReadRow(y, row.data());
        for (std::size_t i = 0; i < row.size(); i += 4) work(&row[i]);
        to.WriteRow(y, row.data());
    }
}

/// A depth that holds the values of both: for 16-bit integers and halves that is 32-bit float.
Depth Deeper(Depth a, Depth b) {
    if (a == b) return a;
    const Depth most = std::max(a, b);
    return most == Depth::Half && std::min(a, b) == Depth::Int16 ? Depth::Float : most;
}

} // namespace

std::shared_ptr<Image> Convert(const Image& image, Depth depth) {
    std::shared_ptr<Image> converted = Share(Image::Make(image.Width, image.Height, depth));
    if (!converted) throw std::bad_alloc();
    converted->AspectX = image.AspectX;
    converted->AspectY = image.AspectY;
    Pass(image, *converted, [](const float*) {});
    return converted;
}

std::shared_ptr<Image> AtLeast(std::shared_ptr<Image> image, Depth depth) {
    const Depth deeper = Deeper(image->PixelDepth, depth);
    return deeper == image->PixelDepth ? image : Convert(*image, deeper);
}

void MultiplyByAlpha(Image& image) {
    Pass(image, image, [](float* rgba) {
        for (int c = 0; c < 3; ++c) rgba[c] *= rgba[3];
    });
}

void DivideByAlpha(Image& image) {
    Pass(image, image, [](float* rgba) {
        if (rgba[3] == 0.0f) return;
        for (int c = 0; c < 3; ++c) rgba[c] /= rgba[3];
    });
}

std::shared_ptr<Image> Exposed(std::shared_ptr<Image> image, double stops) {
    if (stops == 0.0) return image;
    const auto gain = static_cast<float>(std::exp2(stops));
    std::shared_ptr<Image> exposed = Convert(*image, Depth::Float);
    Pass(*exposed, *exposed, [gain](float* rgba) {
        for (int c = 0; c < 3; ++c) rgba[c] *= gain;
    });
    return exposed;
}

float BrightnessOf(const float* rgb) {
    if (rgb[0] == rgb[1] && rgb[0] == rgb[2]) return rgb[0];
    return 0.2126f * rgb[0] + 0.7152f * rgb[1] + 0.0722f * rgb[2];
}

void TurnGrey(Image& image) {
    Pass(image, image, [](float* rgba) { rgba[0] = BrightnessOf(rgba); });
}

} // namespace media
