#include "host/Image.h"

#include "host/Half.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace host {

namespace {

// A stored channel, the 16-bit integer and the real number that it stands for.

template <class Stored>
Stored NearestOf(float real) {
    constexpr double full = std::numeric_limits<Stored>::max();
    const double scaled = static_cast<double>(real) * full + 0.5;
    const double within = scaled > 0.0 ? scaled : 0.0; // NaN is 0 too
    return static_cast<Stored>(static_cast<int>(within < full ? within : full));
}

struct Int8 {
    using Stored = std::uint8_t;
    static std::int32_t In(Stored s) { return s * 257; }
    static Stored Out(std::int32_t h) { return static_cast<Stored>((h * 255 + 32895) >> 16); } // nearest
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
    static std::int32_t In(Stored s) { return NearestOf<std::uint16_t>(s); }
    static Stored Out(std::int32_t h) { return static_cast<float>(h) / 65535.0f; }
    static float Real(Stored s) { return s; }
    static Stored FromReal(float real) { return real; }
};

struct Half {
    using Stored = std::uint16_t;
    static std::int32_t In(Stored s) { return Float::In(FromHalf(s)); }
    static Stored Out(std::int32_t h) { return ToHalf(Float::Out(h)); }
    static float Real(Stored s) { return FromHalf(s); }
    static Stored FromReal(float real) { return ToHalf(real); }
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

    // What a channel is outside: a real number, or an integer.
    static void LoadTo(float* value, const std::byte* at) { *value = Channel::Real(Get(at)); }
    static void LoadTo(std::uint16_t* value, const std::byte* at) {
        *value = static_cast<std::uint16_t>(Load(at));
    }
    static void StoreFrom(float value, std::byte* at) { Put(at, Channel::FromReal(value)); }
    static void StoreFrom(std::uint16_t value, std::byte* at) { Store(at, value); }

    /// Calls move(stored channel, number) for each channel of a row, in one loop where they lie side by side.
    template <class Byte, class Value, class Move>
    static void ForRow(Byte* at0, Byte* at1, int width, Value* rgba, Move move) {
        const std::size_t pixels = static_cast<std::size_t>(width);
        if constexpr (planes == Planes::One) {
            for (std::size_t i = 0; i < 4 * pixels; ++i) move(at0 + i * kSize, rgba + i);
        } else {
            for (std::size_t x = 0; x < pixels; ++x, rgba += 4, at0 += 3 * kSize, at1 += kSize) {
                for (std::size_t c = 0; c < 3; ++c) move(at0 + c * kSize, rgba + c);
                move(at1, rgba + 3);
            }
        }
    }
    template <class Value>
    static void ReadRow(const Image& image, int y, Value* rgba) {
        const std::byte* const at0 = image.PlaneAccess[0].Row(y);
        const std::byte* const at1 = image.PlaneAccess[1].Row(y);
        ForRow(at0, at1, image.Width, rgba, [](const std::byte* at, Value* value) { LoadTo(value, at); });
    }
    template <class Value>
    static void WriteRow(const Image& image, int y, const Value* rgba) {
        ForRow(image.PlaneAccess[0].Row(y), image.PlaneAccess[1].Row(y), image.Width, rgba,
               [](std::byte* at, const Value* value) { StoreFrom(*value, at); });
    }
};

struct Format {
    std::size_t size; ///< bytes of a channel
    PixelReader read;
    PixelWriter write;
    Image::RowAccess rows;
};

template <class Access>
constexpr Format FormatBy() {
    return {Access::kSize,
            Access::Read,
            Access::Write,
            {Access::template ReadRow<float>, Access::template WriteRow<float>,
             Access::template ReadRow<std::uint16_t>, Access::template WriteRow<std::uint16_t>}};
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
    rows_ = format.rows;
}

void Image::LayOutOwn() {
    const std::size_t size = FormatOf(PixelDepth, PixelPlanes).size;
    bytes_ = static_cast<std::size_t>(Width) * static_cast<std::size_t>(Height) * 4 * size;
    store_.reset(new std::byte[bytes_]);
    if (PixelPlanes == Planes::One) {
        LayOut(PlaneAccess[0], store_.get(), Width, Height, 4 * size);
    } else {
        std::byte* behind = LayOut(PlaneAccess[0], store_.get(), Width, Height, 3 * size);
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
    Image* image = MakeUnset(width, height, depth, planes);
    if (image) std::memset(image->store_.get(), 0, image->bytes_);
    return image;
}

Image* Image::MakeUnset(int width, int height, Depth depth, Planes planes) {
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
    Image* image = MakeUnset(like->Width, like->Height, like->PixelDepth, like->PixelPlanes);
    if (image) {
        image->AspectX = like->AspectX;
        image->AspectY = like->AspectY;
    }
    return image;
}

} // namespace host
