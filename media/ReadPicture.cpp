#include "media/Errors.h"
#include "media/PictureFile.h"
#include "media/PixelType.h"
#include "media/Words.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <limits>
#include <mutex>
#include <new>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

namespace media {
namespace {

using host::Depth;
using host::Image;
using OIIO::ImageSpec;
using OIIO::TypeDesc;

/// The depth that takes a file's values without loss where there is one.
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

/// Which channels of a file become red, green, blue and alpha; -1 for an opaque alpha.
struct ChannelMap {
    int colours; ///< 1 or 3
    std::array<int, 4> from;
    int Count() const { return colours + (from[3] >= 0 ? 1 : 0); }
};

ChannelMap MapChannels(const ImageSpec& spec) {
    const int alpha = spec.alpha_channel;
    std::vector<int> plain;
    for (int c = 0; c < spec.nchannels; ++c)
        if (c != alpha) plain.push_back(c);
    if (plain.empty()) return {1, {alpha, alpha, alpha, alpha}};
    if (plain.size() < 3) return {1, {plain[0], plain[0], plain[0], alpha}};

    ChannelMap map{3, {plain[0], plain[1], plain[2], alpha}};
    constexpr const char* names[3] = {"R", "G", "B"};
    for (int c : plain)
        for (std::size_t i = 0; i < 3; ++i)
            if (spec.channel_name(c) == names[i]) map.from[i] = c;
    return map;
}

/// Copies channel by channel from `source`, the file's pixels, to a row of the picture.
template <class T>
void SpreadRow(const std::byte* source, std::byte* target, int width, int channels, const ChannelMap& map,
               T opaque) {
    const T* in = reinterpret_cast<const T*>(source);
    T* out = reinterpret_cast<T*>(target);
    for (int x = 0; x < width; ++x, in += channels, out += 4)
        for (std::size_t c = 0; c < 4; ++c) out[c] = map.from[c] < 0 ? opaque : in[map.from[c]];
}

void SpreadRow(Depth depth, const std::byte* source, std::byte* target, int width, int channels,
               const ChannelMap& map) {
    switch (depth) {
    case Depth::Int8:
        return SpreadRow<std::uint8_t>(source, target, width, channels, map, 255);
    case Depth::Int16:
        return SpreadRow<std::uint16_t>(source, target, width, channels, map, 65535);
    case Depth::Half:
        return SpreadRow<std::uint16_t>(source, target, width, channels, map, 0x3c00); // the bits of 1.0
    case Depth::Float:
        return SpreadRow<float>(source, target, width, channels, map, 1.0f);
    }
}

struct Window {
    int left, top, right, bottom; ///< right and bottom lie one outside
};

/// The frame is the display window; a file that says none has its pixels for it.
Window FrameOf(const ImageSpec& spec) {
    if (spec.full_width < 1 || spec.full_height < 1)
        return {spec.x, spec.y, spec.x + spec.width, spec.y + spec.height};
    return {spec.full_x, spec.full_y, spec.full_x + spec.full_width, spec.full_y + spec.full_height};
}

/// Fills the part of the picture that the file has pixels for; the rest stays black and transparent.
void FillPicture(Image& image, const ImageSpec& spec, const Window& frame,
                 const std::vector<std::byte>& pixels) {
    const ChannelMap map = MapChannels(spec);
    const std::size_t size = PixelType(image.PixelDepth).size();
    const std::size_t pixel = size * static_cast<std::size_t>(spec.nchannels);
    const int left = std::max(frame.left, spec.x), right = std::min(frame.right, spec.x + spec.width);
    const int top = std::max(frame.top, spec.y), bottom = std::min(frame.bottom, spec.y + spec.height);
    for (int y = top; y < bottom && left < right; ++y) {
        const std::size_t skipped =
            static_cast<std::size_t>(y - spec.y) * static_cast<std::size_t>(spec.width) +
            static_cast<std::size_t>(left - spec.x);
        std::byte* row = image.PlaneAccess[0].Row(image.Height - 1 - (y - frame.top));
        SpreadRow(image.PixelDepth, pixels.data() + skipped * pixel,
                  row + static_cast<std::size_t>(left - frame.left) * 4 * size, right - left, spec.nchannels,
                  map);
    }
}

double PixelAspect(const ImageSpec& spec) {
    const double aspect = static_cast<double>(spec.get_float_attribute("PixelAspectRatio", 1.0f));
    return aspect > 0 && std::isfinite(aspect) ? aspect : 1.0;
}

void CheckSize(const std::string& path, const ImageSpec& spec) {
    const auto fits = [](long long width, long long height) {
        return width > 0 && height > 0 && width <= std::numeric_limits<int>::max() / height;
    };
    if (!fits(spec.width, spec.height) || (spec.full_width > 0 && !fits(spec.full_width, spec.full_height)))
        throw FrameError(path + ": a picture of " + std::to_string(spec.width) + " x " +
                         std::to_string(spec.height) + " pixels is too large");
    if (spec.depth > 1 || spec.deep) throw FrameError(path + ": is no flat picture");
}

/// While it lives, nothing reaches standard error: the PNG library writes there what it also reports. One
/// decoder at a time.
class Hush {
public:
    Hush() : lock_(mutex_), kept_(::dup(STDERR_FILENO)) {
        const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
        if (kept_ >= 0 && nowhere >= 0) ::dup2(nowhere, STDERR_FILENO);
        if (nowhere >= 0) ::close(nowhere);
    }
    ~Hush() {
        if (kept_ < 0) return;
        ::dup2(kept_, STDERR_FILENO);
        ::close(kept_);
    }
    Hush(const Hush&) = delete;
    Hush& operator=(const Hush&) = delete;

private:
    static inline std::mutex mutex_;
    const std::lock_guard<std::mutex> lock_;
    const int kept_;
};

Picture Decode(const std::string& path) {
    ImageSpec wishes;
    wishes.attribute(kUnassociatedAlpha, 1);
    const auto file = OIIO::ImageInput::open(path, &wishes);
    if (!file) throw FrameError(path + ": " + OneLine(OIIO::geterror()));
    const ImageSpec& spec = file->spec();
    CheckSize(path, spec);

    const Depth depth = DepthOf(spec.format);
    const Window frame = FrameOf(spec);
    std::vector<std::byte> pixels(spec.image_pixels() * static_cast<std::size_t>(spec.nchannels) *
                                  PixelType(depth).size());
    if (!file->read_image(0, 0, 0, spec.nchannels, PixelType(depth), pixels.data()))
        throw FrameError(path + ": " + OneLine(file->geterror()));

    Picture picture;
    picture.image = Share(Image::Make(frame.right - frame.left, frame.bottom - frame.top, depth));
    if (!picture.image) throw std::bad_alloc();
    FillPicture(*picture.image, spec, frame, pixels);
    picture.image->AspectX = PixelAspect(spec);
    picture.channels = MapChannels(spec).Count();
    picture.format = file->format_name();
    picture.metadata = spec.extra_attribs;
    return picture;
}

} // namespace

std::shared_ptr<Image> Share(Image* image) {
    if (!image) return nullptr;
    return {image, [](Image* held) { held->Recycle(); }};
}

Picture ReadPicture(const std::string& path) {
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) throw FrameError(path + ": there is no such file");
    if (std::filesystem::is_directory(path, ignored)) throw FrameError(path + ": is a folder");
    try {
        const Hush hush;
        return Decode(path);
    } catch (const std::bad_alloc&) {
        throw FrameError(path + ": there is not enough memory for this picture");
    }
}

} // namespace media
