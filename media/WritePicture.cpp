#include "media/Decoding.h"
#include "media/Encoder.h"
#include "media/Errors.h"
#include "media/FormatRules.h"
#include "media/PictureDepth.h"
#include "media/PictureFile.h"
#include "media/PixelType.h"
#include "media/WholeFile.h"
#include "media/Windows.h"
#include "media/Words.h"
#include "media/WriteParts.h"

#include <algorithm>
#include <array>
#include <new>
#include <vector>

namespace media {
namespace {

using host::Depth;
using host::Image;
using OIIO::ImageSpec;

/// How a file stores its pixels.
struct Layout {
    int channels;
    StoredDepth depth;
    bool operator==(const Layout&) const = default;
};

std::string Describe(const Layout& layout) {
    constexpr const char* channels[] = {"grey", "grey with alpha", "RGB", "RGBA"};
    return media::Describe(layout.depth) + " " + channels[layout.channels - 1];
}

/// The pixels in the file's channels, top row first.
std::vector<std::byte> Gather(const Image& image, int channels) {
    const std::size_t size = PixelType(image.PixelDepth).size();
    std::vector<std::byte> pixels(static_cast<std::size_t>(image.Width) *
                                  static_cast<std::size_t>(image.Height) *
                                  static_cast<std::size_t>(channels) * size);
    std::byte* to = pixels.data();
    for (int y = image.Height - 1; y >= 0; --y) {
        const std::byte* from = image.PlaneAccess[0].Row(y);
        for (int x = 0; x < image.Width; ++x, from += 4 * size) {
            const std::size_t first = channels < 3 ? size : static_cast<std::size_t>(channels) * size;
            to = std::copy_n(from, first, to);
            if (channels == 2) to = std::copy_n(from + 3 * size, size, to);
        }
    }
    return pixels;
}

/// All layouts that a file could have, from the wanted one to the one farthest from it.
std::vector<Layout> NearestLayouts(const Layout& wanted) {
    static const std::array<std::vector<int>, 4> channels = {
        std::vector<int>{1, 3, 2, 4}, {2, 4, 1, 3}, {3, 4, 1}, {4, 3, 2, 1}};
    static const std::array<std::vector<Depth>, 4> depths = {
        std::vector<Depth>{Depth::Int8, Depth::Int16, Depth::Float, Depth::Half},
        {Depth::Int16, Depth::Float, Depth::Half, Depth::Int8},
        {Depth::Half, Depth::Float, Depth::Int16, Depth::Int8},
        {Depth::Float, Depth::Int16, Depth::Half, Depth::Int8}};
    std::vector<Layout> layouts = {wanted};
    for (int c : channels[static_cast<std::size_t>(wanted.channels - 1)])
        for (Depth depth : depths[static_cast<std::size_t>(wanted.depth.depth)])
            if (const Layout layout{c, {depth, 0}}; layout != wanted) layouts.push_back(layout);
    return layouts;
}

/// A spec with only a layout.
ImageSpec BareSpec(int width, int height, const Layout& layout) {
    ImageSpec spec(width, height, layout.channels, PixelType(layout.depth.depth));
    spec.alpha_channel = spec.nchannels % 2 ? -1 : spec.nchannels - 1;
    if (spec.nchannels == 1) spec.channelnames = {"Y"};
    if (spec.nchannels == 2) spec.channelnames = {"Y", "A"};
    if (layout.depth.bits > 0) spec.attribute("oiio:BitsPerSample", layout.depth.bits);
    return spec;
}

/// The metadata of the file, without what was true only of the old pixels.
ImageSpec SpecFor(const Image& image, const Layout& layout, const Picture& like, const std::string& format,
                  const WriteOptions& options) {
    ImageSpec spec = BareSpec(image.Width, image.Height, layout);
    const OIIO::ParamValueList own = spec.extra_attribs;
    spec.extra_attribs = like.stored.extra_attribs;
    spec.erase_attribute(
        "oiio:(SHA-1|ConstantColor|AverageColor|subimages|subimagename|BitsPerSample|Movie)");
    spec.erase_attribute("thumbnail_.*|textureformat|wrapmodes|fovcot|CompressionQuality");
    if (like.format != format) spec.erase_attribute("compression");
    for (const OIIO::ParamValue& attribute : own) spec.extra_attribs.push_back(attribute);
    if (const double aspect = image.AspectX / image.AspectY;
        aspect != 1.0 || spec.find_attribute("PixelAspectRatio"))
        spec.attribute("PixelAspectRatio", static_cast<float>(aspect));
    spec.erase_attribute(kUnassociatedAlpha);
    // Encoders that could multiply colours by alpha are told not to. In a TIFF file the tag is also true.
    if (format != "openexr" && (format != "tiff" || WritesStraightAlpha(format, like)))
        spec.attribute(kUnassociatedAlpha, 1);
    if (format == "dpx") spec.erase_attribute("Orientation"); // it would rotate a picture that is upright
    SetCompression(spec, format, options, like);
    return spec;
}

/// The picture in the file's depth, its colours multiplied by alpha or not as in the file, and grey for grey
/// files; the image itself if nothing has to change.
std::shared_ptr<const Image> Prepare(const Image& image, const Layout& layout, const Picture& like,
                                     const std::string& format) {
    const bool straight = like.straight && !like.multiplied;
    const bool alpha = like.colours.HasAlpha() && layout.channels % 2 == 0;
    const bool turn = alpha && !like.matte && straight != WritesStraightAlpha(format, like);
    const bool asIs = image.PixelDepth == layout.depth.depth && image.PixelPlanes == host::Planes::One;
    if (asIs && layout.channels >= 3 && !turn) return {&image, [](const Image*) {}};
    if (!turn && layout.channels >= 3) return Convert(image, layout.depth.depth);

    std::shared_ptr<Image> picture = Convert(image, Depth::Float);
    if (turn) (straight ? MultiplyByAlpha : DivideByAlpha)(*picture);
    if (layout.channels < 3) TurnGrey(*picture);
    return Convert(*picture, layout.depth.depth);
}

/// The layout that is wanted, or the nearest that the format holds.
Layout ChooseLayout(const std::string& name, const std::string& path, const Image& image,
                    const Layout& wanted) {
    for (const Layout& layout : NearestLayouts(wanted)) {
        constexpr int kSide = 8;
        Encoder trial(name);
        if (!Breaks(trial.Format(), BareSpec(image.Width, image.Height, layout)) &&
            trial.Holds(path, BareSpec(kSide, kSide, layout)))
            return layout;
    }
    OIIO::geterror(); // drops the errors about layouts that were tried
    throw FrameError("this format cannot hold such a picture");
}

/// What the source's file holds beyond a plain picture, and `format` cannot.
std::string Losses(const Picture& like, const std::string& format) {
    if (!HasParts(like.format) || HasParts(format)) return "";
    const ImageSpec& spec = like.stored;
    std::string losses, channels;
    const auto lose = [&](const std::string& what) {
        if (!losses.empty()) losses += ", ";
        losses += what;
    };
    for (int c = 0; c < spec.nchannels; ++c)
        if (!like.colours.Uses(c)) channels += " " + spec.channelnames[static_cast<std::size_t>(c)];
    if (!channels.empty()) lose("the channels" + channels);
    if (spec.get_int_attribute("oiio:subimages") > 1) lose("the other parts");
    if (!DisplayWindow(spec).Holds(DataWindow(spec))) lose("the pixels beyond the frame");
    if (spec.full_x || spec.full_y) lose("the position of the frame");
    return losses;
}

/// A colour profile that the encoder refuses is left out.
void EncodeWithProfile(const std::string& name, Encoder& encoder, const std::string& path, ImageSpec spec,
                       const std::vector<std::byte>& pixels,
                       const std::function<void(const std::string&)>& warn) {
    const Decoding quiet(name); // encoders print on standard error what they also report
    try {
        return encoder.Encode(path, spec, pixels.data());
    } catch (const FrameError&) {
        if (!spec.find_attribute("ICCProfile")) throw;
    }
    spec.erase_attribute("ICCProfile");
    encoder.Restart();
    encoder.Encode(path, spec, pixels.data());
    warn(encoder.Format() + " files cannot hold the colour profile of the source; writing without it");
}

void WriteNearest(WholeFile& file, const std::string& name, const Image& image, const Picture& like,
                  const WriteOptions& options, const std::function<void(const std::string&)>& warn) {
    Encoder encoder(name);
    const Layout wanted{like.channels,
                        options.depth.value_or(like.image ? like.depth : StoredDepth{image.PixelDepth})};
    const std::string losses = Losses(like, encoder.Format());
    if (HasParts(encoder.Format()) && HasParts(like.format) && !like.path.empty()) {
        WriteParts(encoder, file.TemporaryPath(), image, like, options);
    } else {
        const Layout layout = ChooseLayout(name, file.TemporaryPath(), image, wanted);
        const std::shared_ptr<const Image> picture = Prepare(image, layout, like, encoder.Format());
        const ImageSpec spec = SpecFor(image, layout, like, encoder.Format(), options);
        EncodeWithProfile(name, encoder, file.TemporaryPath(), spec, Gather(*picture, layout.channels), warn);
        if (layout != wanted || !losses.empty())
            warn(encoder.Format() + " files cannot hold " +
                 (layout == wanted ? losses
                                   : Describe(wanted) + " pictures; writing " + Describe(layout) +
                                         (losses.empty() ? "" : ", without " + losses)));
    }
    if (encoder.Bytes().empty())
        ReadPicture(file.TemporaryPath(), {.layer = {},
                                           .limits = {like.maxPixels, {}},
                                           .atLeast = {}}); // such encoders do not report a full disk
    file.Finish(encoder.Bytes());
}

} // namespace

void CheckCanWrite(const std::string& path, const WriteOptions& options) {
    const auto output = OIIO::ImageOutput::create(path);
    if (!output) {
        OIIO::geterror(); // drops the message, which says no more
        throw UsageError("'" + path + "': no picture format has this extension");
    }
    try {
        CheckOptions(output->format_name(), options);
    } catch (const UsageError& error) {
        throw UsageError("'" + path + "': " + error.what());
    }
}

void WritePicture(const std::string& path, const Image& image, const Picture& like,
                  const std::function<void(const std::string&)>& warn, const WriteOptions& options) {
    try {
        WholeFile file(path);
        WriteNearest(file, path, image, like, options, warn);
    } catch (const FrameError& error) {
        throw FrameError(path + ": " + error.what());
    }
}

} // namespace media
