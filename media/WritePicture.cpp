#include "media/Errors.h"
#include "media/PictureFile.h"
#include "media/PixelType.h"
#include "media/WholeFile.h"
#include "media/Words.h"

#include <OpenImageIO/filesystem.h>
#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <array>
#include <cstring>
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
    Depth depth;
    bool operator==(const Layout&) const = default;
};

std::string Describe(const Layout& layout) {
    constexpr const char* depths[] = {"8-bit", "16-bit", "half float", "32-bit float"};
    constexpr const char* channels[] = {"grey", "grey with alpha", "RGB", "RGBA"};
    return std::string(depths[static_cast<int>(layout.depth)]) + " " + channels[layout.channels - 1];
}

/// The same picture in another depth, through the host's own 16-bit units.
std::shared_ptr<Image> Convert(const Image& image, Depth depth) {
    std::shared_ptr<Image> converted = Share(Image::Make(image.Width, image.Height, depth));
    if (!converted) throw std::bad_alloc();
    host::Pixel pixel;
    for (int y = 0; y < image.Height; ++y) {
        const std::byte* from[2] = {image.PlaneAccess[0].Row(y), image.PlaneAccess[1].Row(y)};
        std::byte* to = converted->PlaneAccess[0].Row(y);
        for (int x = 0; x < image.Width; ++x, to += converted->PlaneAccess[0].Step) {
            image.Read(&pixel, from[0], from[1]);
            converted->Write(&pixel, to, nullptr);
            from[0] += image.PlaneAccess[0].Step;
            if (from[1]) from[1] += image.PlaneAccess[1].Step;
        }
    }
    return converted;
}

/// Turns red into the brightness of the colour, which is the grey itself where all three are equal.
void TurnGrey(Image& image) {
    host::Pixel pixel;
    for (int y = 0; y < image.Height; ++y) {
        std::byte* at = image.PlaneAccess[0].Row(y);
        for (int x = 0; x < image.Width; ++x, at += image.PlaneAccess[0].Step) {
            image.Read(&pixel, at, nullptr);
            if (pixel.Red == pixel.Green && pixel.Red == pixel.Blue) continue;
            pixel.Red = (2126 * pixel.Red + 7152 * pixel.Green + 722 * pixel.Blue + 5000) / 10000; // Rec. 709
            image.Write(&pixel, at, nullptr);
        }
    }
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

/// All that a file could hold, from what is wanted to what is farthest from it.
std::vector<Layout> NearestLayouts(const Layout& wanted) {
    static const std::array<std::vector<int>, 4> channels = {
        std::vector<int>{1, 3, 2, 4}, {2, 4, 1, 3}, {3, 4, 1}, {4, 3, 2, 1}};
    static const std::array<std::vector<Depth>, 4> depths = {
        std::vector<Depth>{Depth::Int8, Depth::Int16, Depth::Float, Depth::Half},
        {Depth::Int16, Depth::Float, Depth::Half, Depth::Int8},
        {Depth::Half, Depth::Float, Depth::Int16, Depth::Int8},
        {Depth::Float, Depth::Int16, Depth::Half, Depth::Int8}};
    std::vector<Layout> layouts;
    for (int c : channels[static_cast<std::size_t>(wanted.channels - 1)])
        for (Depth depth : depths[static_cast<std::size_t>(wanted.depth)]) layouts.push_back({c, depth});
    return layouts;
}

void MarkAlpha(ImageSpec& spec) {
    spec.alpha_channel = spec.nchannels % 2 ? -1 : spec.nchannels - 1;
    if (spec.nchannels == 1) spec.channelnames = {"Y"};
    if (spec.nchannels == 2) spec.channelnames = {"Y", "A"};
}

/// What the file says of itself; leaves out what was true of the old pixels only.
ImageSpec SpecFor(const Image& image, const Layout& layout, const Picture& like, const std::string& format) {
    ImageSpec spec(image.Width, image.Height, layout.channels, PixelType(layout.depth));
    MarkAlpha(spec);
    spec.extra_attribs = like.metadata;
    spec.erase_attribute("oiio:(SHA-1|ConstantColor|AverageColor|subimages|subimagename)");
    spec.erase_attribute("compression|thumbnail_.*|textureformat|wrapmodes|fovcot");
    if (like.format != format) spec.erase_attribute("oiio:BitsPerSample");
    if (const double aspect = image.AspectX / image.AspectY;
        aspect != 1.0 || spec.find_attribute("PixelAspectRatio"))
        spec.attribute("PixelAspectRatio", static_cast<float>(aspect));
    if (format != "openexr") spec.attribute(kUnassociatedAlpha, 1); // OpenEXR stores what it is given
    return spec;
}

/// The picture in the layout's depth and, for grey files, in grey; the image itself where that is what it is.
std::shared_ptr<const Image> Prepare(const Image& image, const Layout& layout) {
    const bool asIs = image.PixelDepth == layout.depth && image.PixelPlanes == host::Planes::One;
    if (asIs && layout.channels >= 3) return {&image, [](const Image*) {}};
    std::shared_ptr<Image> picture = Convert(image, layout.depth);
    if (layout.channels < 3) TurnGrey(*picture);
    return picture;
}

/// Whether a format's encoder writes what can be read when it works in memory. That of TIFF does not:
/// directories of metadata come behind the pixels, and the first one, which it goes back to, is lost.
bool WorksInMemory(const OIIO::ImageOutput& output) {
    return output.supports("ioproxy") && std::strcmp(output.format_name(), "tiff") != 0;
}

/// A file format's own encoder. It works in memory where it can, so that the disk sees one plain write whose
/// failure shows; other formats write the file at `path` themselves.
class Encoder {
public:
    /// Throws FrameError where no format goes by the name's ending.
    explicit Encoder(const std::string& name) : memory_(bytes_), output_(OIIO::ImageOutput::create(name)) {
        if (!output_) throw FrameError(OneLine(OIIO::geterror()));
    }

    std::string Format() const { return output_->format_name(); }
    const std::vector<unsigned char>& Bytes() const { return bytes_; }

    /// Throws FrameError.
    void Encode(const std::string& path, const ImageSpec& spec, const std::vector<std::byte>& pixels) {
        if (!Open(path, spec) || !output_->write_image(spec.format, pixels.data()) || !output_->close())
            throw FrameError(OneLine(output_->geterror()));
        if (bytes_.empty()) ReadPicture(path); // such encoders do not tell when the disk was full
    }

    /// Whether the format stores the layout as it stands, found out with a picture of a few pixels. It has to
    /// be written to the end: some encoders do not survive being left half-way.
    bool Holds(const std::string& path, const Layout& layout) {
        constexpr int kSide = 8;
        ImageSpec spec(kSide, kSide, layout.channels, PixelType(layout.depth));
        MarkAlpha(spec);
        if (spec.alpha_channel >= 0 && !output_->supports("alpha")) return false;
        if (!Open(path, spec)) return false;
        const ImageSpec& stored = output_->spec();
        const bool holds = stored.nchannels == spec.nchannels && stored.format == spec.format;
        const std::vector<std::byte> black(spec.image_bytes());
        return output_->write_image(spec.format, black.data()) && output_->close() && holds;
    }

private:
    bool Open(const std::string& path, const ImageSpec& spec) {
        if (WorksInMemory(*output_)) output_->set_ioproxy(&memory_);
        if (output_->open(path, spec)) return true;
        output_->set_ioproxy(nullptr); // or some encoders close what they have not opened
        return false;
    }

    std::vector<unsigned char> bytes_;
    OIIO::Filesystem::IOVecOutput memory_;
    std::unique_ptr<OIIO::ImageOutput> output_; ///< may write to its memory until it is gone
};

void WriteNearest(WholeFile& file, const std::string& name, const Image& image, const Picture& like,
                  const std::function<void(const std::string&)>& warn) {
    const Layout wanted{like.channels, like.image ? like.image->PixelDepth : image.PixelDepth};
    for (const Layout& layout : NearestLayouts(wanted)) {
        if (!Encoder(name).Holds(file.TemporaryPath(), layout)) continue;
        Encoder encoder(name);
        const std::shared_ptr<const Image> picture = Prepare(image, layout);
        encoder.Encode(file.TemporaryPath(), SpecFor(image, layout, like, encoder.Format()),
                       Gather(*picture, layout.channels));
        if (layout != wanted)
            warn(encoder.Format() + " files hold no " + Describe(wanted) + " pictures; writing " +
                 Describe(layout));
        file.Finish(encoder.Bytes());
        return;
    }
    OIIO::geterror(); // what the encoders said of layouts that they do not hold
    throw FrameError("this format holds no such picture");
}

} // namespace

void CheckCanWrite(const std::string& path) {
    if (OIIO::ImageOutput::create(path)) return;
    OIIO::geterror(); // takes the message off the list; it says no more
    throw UsageError("'" + path + "': no picture format goes by this ending");
}

void WritePicture(const std::string& path, const Image& image, const Picture& like,
                  const std::function<void(const std::string&)>& warn) {
    try {
        WholeFile file(path);
        WriteNearest(file, path, image, like, warn);
    } catch (const FrameError& error) {
        throw FrameError(path + ": " + error.what());
    }
}

} // namespace media
