#include "host/Image.h"

#include <half.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>

namespace host {

namespace {

constexpr std::int32_t kFull = 65535;

// A stored channel, the 16-bit integer and the real number that it stands for.

template <class Stored>
Stored NearestOf(float real) {
    constexpr double full = std::numeric_limits<Stored>::max();
    const double scaled = static_cast<double>(real) * full + 0.5;
    return static_cast<Stored>(scaled > 0.0 ? std::min(scaled, full) : 0.0); // NaN is 0 too
}

struct Int8 {
    using Stored = std::uint8_t;
    static std::int32_t In(Stored s) { return s * 257; }
    static Stored Out(std::int32_t h) { return static_cast<Stored>((h + 128) / 257); }
    static float Real(Stored s) { return static_cast<float>(s) / 255.0f; }
    static Stored FromReal(float real) { return NearestOf<Stored>(real); }
};

struct Int16 {
    using Stored = std::uint16_t;
    static std::int32_t In(Stored s) { return s; }
    static Stored Out(std::int32_t h) { return static_cast<Stored>(h); }
    static float Real(Stored s) { return static_cast<float>(s) / 65535.0f; }
    static Stored FromReal(float real) { return NearestOf<Stored>(real); }
};

struct Float {
    using Stored = float;
    static std::int32_t In(Stored s) {
        if (!(s > 0.0f)) return 0; // NaN too
        if (s >= 1.0f) return kFull;
        return static_cast<std::int32_t>(static_cast<double>(s) * kFull + 0.5);
    }
    static Stored Out(std::int32_t h) { return static_cast<Stored>(h / 65535.0); }
    static float Real(Stored s) { return s; }
    static Stored FromReal(float real) { return real; }
};

struct Half {
    using Stored = Imath::half;
    static std::int32_t In(Stored s) { return Float::In(static_cast<float>(s)); }
    static Stored Out(std::int32_t h) { return Stored(Float::Out(h)); }
    static float Real(Stored s) { return static_cast<float>(s); }
    static Stored FromReal(float real) { return Stored(real); }
};

/// Reads and writes pixels of four channels `Channel`, in one plane or two.
template <class Channel, Planes planes>
struct Access {
    using Stored = typename Channel::Stored;
    static constexpr std::size_t kSize = sizeof(Stored);

    static Stored Get(const std::byte* at) {
        Stored stored;
        std::memcpy(static_cast<void*>(&stored), at, kSize);
        return stored;
    }
    static void Put(std::byte* at, Stored stored) {
        std::memcpy(at, static_cast<const void*>(&stored), kSize);
    }
    static std::int32_t Load(const std::byte* at) { return Channel::In(Get(at)); }
    static void Store(std::byte* at, std::int32_t value) { Put(at, Channel::Out(value)); }
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

    static constexpr std::size_t kColours = planes == Planes::One ? 4 : 3; ///< channels of the first plane

    static void ReadRow(const Image& image, int y, float* rgba) {
        const std::byte* at0 = image.PlaneAccess[0].Row(y);
        const std::byte* at1 = image.PlaneAccess[1].Row(y);
        for (int x = 0; x < image.Width; ++x, rgba += 4) {
            for (std::size_t c = 0; c < kColours; ++c, at0 += kSize) rgba[c] = Channel::Real(Get(at0));
            if constexpr (planes == Planes::Two) {
                rgba[3] = Channel::Real(Get(at1));
                at1 += kSize;
            }
        }
    }
    static void WriteRow(const Image& image, int y, const float* rgba) {
        std::byte* at0 = image.PlaneAccess[0].Row(y);
        std::byte* at1 = image.PlaneAccess[1].Row(y);
        for (int x = 0; x < image.Width; ++x, rgba += 4) {
            for (std::size_t c = 0; c < kColours; ++c, at0 += kSize) Put(at0, Channel::FromReal(rgba[c]));
            if constexpr (planes == Planes::Two) {
                Put(at1, Channel::FromReal(rgba[3]));
                at1 += kSize;
            }
        }
    }
};

struct Format {
    std::size_t size; ///< bytes of a channel
    PixelReader read;
    PixelWriter write;
    void (*readRow)(const Image&, int, float*);
    void (*writeRow)(const Image&, int, const float*);
};

template <class Access>
constexpr Format FormatBy() {
    return {Access::kSize, Access::Read, Access::Write, Access::ReadRow, Access::WriteRow};
}

template <class Channel>
Format FormatOf(Planes planes) {
    return planes == Planes::One ? FormatBy<Access<Channel, Planes::One>>()
                                 : FormatBy<Access<Channel, Planes::Two>>();
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
    readRow_ = format.readRow;
    writeRow_ = format.writeRow;
}

void Image::LayOutOwn() {
    const std::size_t size = FormatOf(PixelDepth, PixelPlanes).size;
    store_.resize(static_cast<std::size_t>(Width) * static_cast<std::size_t>(Height) * 4 * size);
    if (PixelPlanes == Planes::One) {
        LayOut(PlaneAccess[0], store_.data(), Width, Height, 4 * size);
    } else {
        std::byte* behind = LayOut(PlaneAccess[0], store_.data(), Width, Height, 3 * size);
        LayOut(PlaneAccess[1], behind, Width, Height, size);
    }
}

namespace {

bool IsSize(int width, int height) {
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    return width > 0 && height > 0 && static_cast<std::int64_t>(width) * height <= most;
}

} // namespace

Image* Image::Make(int width, int height, Depth depth, Planes planes) {
    if (!IsSize(width, height)) return nullptr;
    try {
        Ref<Image> image(new Image(width, height, depth, planes));
        image->LayOutOwn();
        return image.release();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

Image* Image::Over(std::byte* bottom, std::ptrdiff_t rowBytes, int width, int height, Depth depth) {
    if (!IsSize(width, height)) return nullptr;
    try {
        Ref<Image> image(new Image(width, height, depth, Planes::One));
        Plane& plane = image->PlaneAccess[0];
        plane.Step = static_cast<std::ptrdiff_t>(4 * FormatOf(depth, Planes::One).size);
        for (int y = 0; y < height; ++y) plane.Rows.push_back(bottom + y * rowBytes);
        return image.release();
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
