#include "media/WriteParts.h"

#include "media/Decoding.h"
#include "media/Errors.h"
#include "media/FormatRules.h"
#include "media/PictureDepth.h"
#include "media/PixelType.h"
#include "media/Windows.h"

#include <OpenImageIO/deepdata.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace media {
namespace {

using host::Image;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

/// The data window, enlarged by all pixels of the picture that are not black and transparent.
Window Enlarged(const ImageSpec& spec, const Image& image) {
    Window window = DataWindow(spec);
    const Window data = window;
    std::vector<float> row(static_cast<std::size_t>(image.Width) * 4);
    for (int i = 0; i < image.Height; ++i) {
        const int y = spec.full_y + image.Height - 1 - i;
        image.ReadRow(i, row.data());
        for (int x = 0; x < image.Width; ++x) {
            const float* pixel = &row[static_cast<std::size_t>(x) * 4];
            if (data.Holds(spec.full_x + x, y) ||
                std::all_of(pixel, pixel + 4, [](float v) { return v == 0.0f; }))
                continue;
            window.left = std::min(window.left, spec.full_x + x);
            window.right = std::max(window.right, spec.full_x + x + 1);
            window.top = std::min(window.top, y);
            window.bottom = std::max(window.bottom, y + 1);
        }
    }
    return window;
}

/// The part of the file that was worked on: its header, and its pixels as they are stored.
class WorkedPart {
public:
    WorkedPart(const Image& image, const Picture& like, const WriteOptions& options)
        : image_(image)
        , colours_(like.colours)
        , source_(like.stored)
        , window_(DataWindow(like.stored).Holds(DisplayWindow(like.stored)) ? DataWindow(like.stored)
                                                                            : Enlarged(like.stored, image))
        , spec_(like.stored) {
        spec_.x = window_.left;
        spec_.y = window_.top;
        spec_.width = window_.right - window_.left;
        spec_.height = window_.bottom - window_.top;
        const double aspect = image.AspectX / image.AspectY;
        if (aspect != 1.0 || spec_.find_attribute("PixelAspectRatio"))
            spec_.attribute("PixelAspectRatio", static_cast<float>(aspect));
        spec_.erase_attribute("oiio:(SHA-1|ConstantColor|AverageColor)|textureformat|wrapmodes|fovcot");
        if (options.depth) SetDepth(PixelType(options.depth->depth));
        SetCompression(spec_, "openexr", options, like);
    }

    const ImageSpec& Spec() const { return spec_; }

    std::vector<std::byte> Pixels(const CheckedInput& file, int part) const {
        std::vector<std::byte> pixels(static_cast<std::size_t>(spec_.width) *
                                      static_cast<std::size_t>(spec_.height) * spec_.pixel_bytes(true));
        if (KeepsSomething()) CopyRest(file, part, pixels);
        PutColours(pixels);
        return pixels;
    }

private:
    void SetDepth(TypeDesc type) {
        if (source_.channelformats.empty() && source_.nchannels == colours_.Count()) {
            spec_.format = type;
            return;
        }
        spec_.channelformats.clear();
        for (int c = 0; c < spec_.nchannels; ++c)
            spec_.channelformats.push_back(colours_.Uses(c) ? type : source_.channelformat(c));
    }

    /// Other channels, or pixels beyond the frame.
    bool KeepsSomething() const {
        for (int c = 0; c < source_.nchannels; ++c)
            if (!colours_.Uses(c)) return true;
        return !DisplayWindow(source_).Holds(DataWindow(source_));
    }

    /// The offset of a channel in a pixel.
    static std::size_t Offset(const ImageSpec& spec, int channel) {
        return spec.pixel_bytes(0, channel, true);
    }

    std::byte* At(std::vector<std::byte>& pixels, int x, int y) const {
        const std::size_t index =
            static_cast<std::size_t>(y - spec_.y) * static_cast<std::size_t>(spec_.width) +
            static_cast<std::size_t>(x - spec_.x);
        return &pixels[index * spec_.pixel_bytes(true)];
    }

    void CopyRest(const CheckedInput& file, int part, std::vector<std::byte>& pixels) const {
        const std::size_t pixel = source_.pixel_bytes(true);
        std::vector<std::byte> stored(source_.image_pixels() * pixel);
        file.Read(part, 0, source_.nchannels, TypeDesc::UNKNOWN, stored.data());
        const std::byte* from = stored.data();
        for (int y = source_.y; y < source_.y + source_.height; ++y) {
            std::byte* to = At(pixels, source_.x, y);
            for (int x = 0; x < source_.width; ++x, from += pixel, to += spec_.pixel_bytes(true))
                for (int c = 0; c < source_.nchannels; ++c)
                    OIIO::convert_pixel_values(source_.channelformat(c), from + Offset(source_, c),
                                               spec_.channelformat(c), to + Offset(spec_, c), 1);
        }
    }

    void PutColours(std::vector<std::byte>& pixels) const {
        const Window frame{spec_.full_x, spec_.full_y, spec_.full_x + image_.Width,
                           spec_.full_y + image_.Height};
        const int left = std::max(frame.left, window_.left), right = std::min(frame.right, window_.right);
        std::vector<float> row(static_cast<std::size_t>(image_.Width) * 4);
        for (int y = std::max(frame.top, window_.top);
             y < std::min(frame.bottom, window_.bottom) && left < right; ++y) {
            image_.ReadRow(image_.Height - 1 - (y - frame.top), row.data());
            if (colours_.grey)
                for (std::size_t i = 0; i < row.size(); i += 4) row[i] = BrightnessOf(&row[i]);
            for (std::size_t c = 0; c < 4; ++c)
                if (const int channel = colours_.from[c];
                    channel >= 0 && !(colours_.grey && (c == 1 || c == 2)))
                    OIIO::convert_image(
                        1, right - left, 1, 1, &row[static_cast<std::size_t>(left - frame.left) * 4 + c],
                        TypeDesc::FLOAT, 4 * sizeof(float), OIIO::AutoStride, OIIO::AutoStride,
                        At(pixels, left, y) + Offset(spec_, channel), spec_.channelformat(channel),
                        static_cast<OIIO::stride_t>(spec_.pixel_bytes(true)), OIIO::AutoStride,
                        OIIO::AutoStride);
        }
    }

    const Image& image_;
    const ColourChannels& colours_;
    const ImageSpec& source_;
    const Window window_;
    ImageSpec spec_;
};

void CopyPart(const CheckedInput& file, int part, const ImageSpec& spec, Encoder& encoder) {
    if (spec.deep) {
        OIIO::DeepData pixels;
        file.ReadDeep(part, pixels);
        return encoder.WriteDeep(pixels);
    }
    std::vector<std::byte> pixels(spec.image_pixels() * spec.pixel_bytes(true));
    file.Read(part, 0, spec.nchannels, TypeDesc::UNKNOWN, pixels.data());
    encoder.Write(TypeDesc::UNKNOWN, pixels.data());
}

} // namespace

void WriteParts(Encoder& encoder, const std::string& path, const Image& image, const Picture& like,
                const WriteOptions& options) {
    const WorkedPart worked(image, like, options);
    const Decoding decoding(like.path);
    const CheckedInput file(like.path, {like.maxPixels, {}});
    std::vector<ImageSpec> specs;
    for (int part = 0; part < file.Pictures(); ++part)
        specs.push_back(part == like.part ? worked.Spec() : file.Spec(part));

    encoder.Begin(path, specs);
    for (int part = 0; part < file.Pictures(); ++part) {
        if (part > 0) encoder.Next(specs[static_cast<std::size_t>(part)]);
        if (part == like.part)
            encoder.Write(TypeDesc::UNKNOWN, worked.Pixels(file, part).data());
        else
            CopyPart(file, part, specs[static_cast<std::size_t>(part)], encoder);
    }
    encoder.Finish();
}

} // namespace media
