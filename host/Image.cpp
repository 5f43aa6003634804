#include "host/Image.h"

#include <half.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <new>

namespace host {

namespace {

constexpr std::int32_t kFull = 65535;

// A stored channel and the 16-bit integer that it stands for.

struct Int8 {
    using Stored = std::uint8_t;
    static std::int32_t In(Stored s) { return s * 257; }
    static Stored Out(std::int32_t h) { return static_cast<Stored>((h + 128) / 257); }
};

struct Int16 {
    using Stored = std::uint16_t;
    static std::int32_t In(Stored s) { return s; }
    static Stored Out(std::int32_t h) { return static_cast<Stored>(h); }
};

struct Float {
    using Stored = float;
    static std::int32_t In(Stored s) {
        if (!(s > 0.0f)) return 0; // NaN too
        if (s >= 1.0f) return kFull;
        return static_cast<std::int32_t>(static_cast<double>(s) * kFull + 0.5);
    }
    static Stored Out(std::int32_t h) { return static_cast<Stored>(h / 65535.0); }
};

struct Half {
    using Stored = Imath::half;
    static std::int32_t In(Stored s) { return Float::In(static_cast<float>(s)); }
    static Stored Out(std::int32_t h) { return Stored(Float::Out(h)); }
};

/// Reads and writes pixels of four channels `Channel`, in one plane or two.
template <class Channel, Planes planes>
struct Access {
    using Stored = typename Channel::Stored;
    static constexpr std::size_t kSize = sizeof(Stored);

    static std::int32_t Load(const std::byte* at) {
        Stored stored;
        std::memcpy(static_cast<void*>(&stored), at, kSize);
        return Channel::In(stored);
    }
    static void Store(std::byte* at, std::int32_t value) {
        const Stored stored = Channel::Out(value);
        std::memcpy(at, static_cast<const void*>(&stored), kSize);
    }
    static void Read(Pixel* pixel, const std::byte* plane0, const std::byte* plane1) {
        pixel->Red = Load(plane0);
        pixel->Green = Load(plane0 + kSize);
        pixel->Blue = Load(plane0 + 2 * kSize);
        pixel->Alpha = Load(planes == Planes::One ? plane0 + 3 * kSize : plane1);
    }
    static void Write(const Pixel* pixel, std::byte* plane0, std::byte* plane1) {
        Store(plane0, pixel->Red);
        Store(plane0 + kSize, pixel->Green);
        Store(plane0 + 2 * kSize, pixel->Blue);
        Store(planes == Planes::One ? plane0 + 3 * kSize : plane1, pixel->Alpha);
    }
};

struct Format {
    std::size_t size; ///< bytes of a channel
    PixelReader read;
    PixelWriter write;
};

template <class Channel>
Format FormatOf(Planes planes) {
    constexpr std::size_t size = sizeof(typename Channel::Stored);
    if (planes == Planes::One)
        return {size, Access<Channel, Planes::One>::Read, Access<Channel, Planes::One>::Write};
    return {size, Access<Channel, Planes::Two>::Read, Access<Channel, Planes::Two>::Write};
}

Format FormatOf(Depth depth, Planes planes) {
    switch (depth) {
    case Depth::Int8:
        return FormatOf<Int8>(planes);
    case Depth::Int16:
        return FormatOf<Int16>(planes);
    case Depth::Half:
        return FormatOf<Half>(planes);
    case Depth::Float:
        break;
    }
    return FormatOf<Float>(planes);
}

/// Lays out one plane from `start` and gives the address behind it.
std::byte* LayOut(Image::Plane& plane, std::byte* start, int width, int height, std::size_t pixelBytes) {
    plane.Step = static_cast<std::ptrdiff_t>(pixelBytes);
    plane.Rows.resize(static_cast<std::size_t>(height));
    for (std::byte*& row : plane.Rows) {
        row = start;
        start += static_cast<std::size_t>(width) * pixelBytes;
    }
    return start;
}

} // namespace

Image::Image(int width, int height, Depth depth, Planes planes)
    : Width(width)
    , Height(height)
    , PixelDepth(depth)
    , PixelPlanes(planes) {
    const Format format = FormatOf(depth, planes);
    Read = format.read;
    Write = format.write;
    store_.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4 * format.size);
    if (planes == Planes::One) {
        LayOut(PlaneAccess[0], store_.data(), width, height, 4 * format.size);
    } else {
        std::byte* behind = LayOut(PlaneAccess[0], store_.data(), width, height, 3 * format.size);
        LayOut(PlaneAccess[1], behind, width, height, format.size);
    }
}

Image* Image::Make(int width, int height, Depth depth, Planes planes) {
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    if (width < 1 || height < 1 || static_cast<std::int64_t>(width) * height > most) return nullptr;
    try {
        return new Image(width, height, depth, planes);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

Image* Image::NewImage(const TagList& tags) {
    const TagValue* value = tags.Find(kTagImageLike);
    const auto* pointer = value ? std::get_if<const void*>(value) : nullptr;
    if (!pointer || !*pointer) return nullptr;
    const auto* like = static_cast<const Image*>(*pointer);
    Image* image = Make(like->Width, like->Height, like->PixelDepth, like->PixelPlanes);
    if (image) {
        image->AspectX = like->AspectX;
        image->AspectY = like->AspectY;
    }
    return image;
}

} // namespace host
