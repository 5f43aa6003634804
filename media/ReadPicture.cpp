#include "media/CheckedInput.h"
#include "media/Decoding.h"
#include "media/Errors.h"
#include "media/FormatRules.h"
#include "media/JpegQuality.h"
#include "media/PictureDepth.h"
#include "media/PictureFile.h"
#include "media/PixelType.h"
#include "media/Windows.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <new>
#include <vector>

namespace media {
namespace {

using host::Depth;
using host::Image;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

/// The depth that takes a type's values without loss, if there is one.
Depth DepthOf(TypeDesc type) {
    switch (type.basetype) {
    case TypeDesc::UINT8:
    case TypeDesc::INT8:
        return Depth::Int8;
    case TypeDesc::HALF:
        return Depth::Half;
    case TypeDesc::FLOAT:
    case TypeDesc::DOUBLE:
        return Depth::Float;
    default:
        return Depth::Int16;
    }
}

/// The depth of the channels that are worked on: the deepest of them.
Depth DepthOf(const ImageSpec& spec, const ColourChannels& colours) {
    Depth depth = Depth::Int8;
    for (int channel : colours.from)
        if (channel >= 0) depth = std::max(depth, DepthOf(spec.channelformat(channel)));
    return depth;
}

/// Copies channel by channel to a row from `in`, pixels of `channels` channels of which the lowest is
/// `first`.
template <class T>
void SpreadRow(const std::byte* source, std::byte* target, int width, int channels, int first,
               const ColourChannels& colours, T opaque) {
    const T* in = reinterpret_cast<const T*>(source) - first;
    T* out = reinterpret_cast<T*>(target);
    const T none[4] = {T(0), T(0), T(0), opaque};
    for (int x = 0; x < width; ++x, in += channels, out += 4)
        for (std::size_t c = 0; c < 4; ++c) out[c] = colours.from[c] < 0 ? none[c] : in[colours.from[c]];
}

void SpreadRow(Depth depth, const std::byte* source, std::byte* target, int width, int channels, int first,
               const ColourChannels& colours) {
    switch (depth) {
    case Depth::Int8:
        return SpreadRow<std::uint8_t>(source, target, width, channels, first, colours, 255);
    case Depth::Int16:
        return SpreadRow<std::uint16_t>(source, target, width, channels, first, colours, 65535);
    case Depth::Half:
        return SpreadRow<std::uint16_t>(source, target, width, channels, first, colours,
                                        0x3c00); // the bits of 1.0
    case Depth::Float:
        return SpreadRow<float>(source, target, width, channels, first, colours, 1.0f);
    }
}

/// Reads the part of the frame that the file has pixels for; the rest stays black and transparent.
void FillPicture(Image& image, const CheckedInput& file, const Picture& picture) {
    const ImageSpec& spec = picture.stored;
    const int first = picture.colours.First(), channels = picture.colours.End() - first;
    const std::size_t size = PixelType(image.PixelDepth).size();
    const std::size_t pixel = size * static_cast<std::size_t>(channels);
    std::vector<std::byte> pixels(spec.image_pixels() * pixel);
    file.Read(picture.part, first, first + channels, PixelType(image.PixelDepth), pixels.data());

    const Window data = DataWindow(spec), frame = DisplayWindow(spec);
    const int left = std::max(frame.left, data.left), right = std::min(frame.right, data.right);
    const int top = std::max(frame.top, data.top), bottom = std::min(frame.bottom, data.bottom);
    for (int y = top; y < bottom && left < right; ++y) {
        const std::size_t skipped =
            static_cast<std::size_t>(y - spec.y) * static_cast<std::size_t>(spec.width) +
            static_cast<std::size_t>(left - spec.x);
        std::byte* row = image.PlaneAccess[0].Row(image.Height - 1 - (y - spec.full_y));
        SpreadRow(image.PixelDepth, pixels.data() + skipped * pixel,
                  row + static_cast<std::size_t>(left - spec.full_x) * 4 * size, right - left, channels,
                  first, picture.colours);
    }
}

double PixelAspect(const ImageSpec& spec) {
    const double aspect = static_cast<double>(spec.get_float_attribute("PixelAspectRatio", 1.0f));
    return aspect > 0 && std::isfinite(aspect) ? aspect : 1.0;
}

/// All channels of a file, part by part.
std::string AllChannels(const CheckedInput& file) {
    std::string all;
    for (int part = 0; part < file.Pictures(); ++part)
        all += (part ? "; part " + std::to_string(part) + ": " : "") + ChannelList(file.Spec(part));
    return all;
}

/// Finds the layer and records where the picture's colours are.
void ChooseColours(Picture& picture, const CheckedInput& file, const std::string& path,
                   const std::string& layer, int number) {
    const bool parts = HasParts(picture.format);
    const int last = parts && !layer.empty() ? file.Pictures() - 1 : number;
    for (int part = number; part <= last; ++part) {
        const ImageSpec spec = file.Spec(part);
        if (spec.depth > 1 || (spec.deep && layer.empty()))
            throw FrameError(path + ": is not a flat picture");
        if (spec.deep) continue;
        std::optional<ColourChannels> colours = FindColours(spec, layer, parts);
        if (!colours && !layer.empty() && spec.get_string_attribute("oiio:subimagename") == layer)
            colours = FindColours(spec, "", parts);
        if (!colours) continue;
        picture.stored = spec;
        picture.part = part;
        picture.colours = *colours;
        picture.channels = colours->Count();
        return;
    }
    throw FrameError(path +
                     (layer.empty() ? ": has no colour channels R, G, B or Y"
                                    : ": has no layer '" + layer + "' with colours") +
                     "; its channels are " + AllChannels(file));
}

Picture Decode(const std::string& path, const ReadOptions& options, int number) {
    const CheckedInput file(path, options.limits);
    Picture picture;
    picture.path = path;
    picture.maxPixels = options.limits.maxPixels;
    picture.format = file.Format();
    if (number >= file.Pictures()) throw FrameError(path + ": has no picture " + std::to_string(number));
    ChooseColours(picture, file, path, options.layer, number);
    const ImageSpec& spec = picture.stored;
    picture.depth = {DepthOf(spec, picture.colours), FewerBits(spec)};
    picture.straight = picture.colours.HasAlpha() && HoldsStraightAlpha(picture.format, spec);
    if (picture.format == "jpeg") picture.quality = JpegQuality(path);

    picture.image = Share(Image::Make(spec.full_width, spec.full_height, picture.depth.depth));
    if (!picture.image) throw std::bad_alloc();
    FillPicture(*picture.image, file, picture);
    picture.image->AspectX = PixelAspect(spec);
    if (options.atLeast) picture.image = AtLeast(picture.image, *options.atLeast);
    if (!picture.colours.HasAlpha()) picture.image->SetAttrs({{host::kTagOpaque, 0}});
    if (options.premultiply && picture.straight) {
        MultiplyByAlpha(*picture.image);
        picture.multiplied = true;
    }
    return picture;
}

/// Runs code that uses a decoder; whatever it throws fails the frame.
template <class Work>
auto Guarded(const std::string& path, const Work& work) {
    try {
        const Decoding decoding(path);
        return work();
    } catch (const FrameError&) {
        throw;
    } catch (const std::bad_alloc&) {
        throw FrameError(path + ": there is not enough memory for this picture");
    } catch (const std::exception& error) {
        throw FrameError(path + ": cannot be decoded: " + error.what());
    }
}

} // namespace

std::shared_ptr<Image> Share(Image* image) {
    if (!image) return nullptr;
    return {image, [](Image* held) { held->Recycle(); }};
}

Picture ReadPicture(const std::string& path, const ReadOptions& options, int number) {
    return Guarded(path, [&] { return Decode(path, options, number); });
}

int CountFrames(const std::string& path, const ReadLimits& limits) {
    return Guarded(path, [&] {
        const CheckedInput file(path, limits);
        if (file.Pictures() == 1 || HasParts(file.Format())) return 1;
        const ImageSpec first = file.Spec(0);
        if (first.get_int_attribute("oiio:Movie")) return file.Pictures();
        for (int picture = 1; picture < file.Pictures(); ++picture) {
            const ImageSpec spec = file.Spec(picture);
            if (spec.width != first.width || spec.height != first.height) return 1; // a thumbnail, say
        }
        return file.Pictures();
    });
}

} // namespace media
