#pragma once

#include "host/Parameter.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace host {

/// One pixel on its way in or out of an image: integers from 0 to 65535 at every depth.
struct Pixel {
    std::int32_t Blue = 0;
    std::int32_t Green = 0;
    std::int32_t Red = 0;
    std::int32_t Alpha = 0;
};

/// What a channel is stored as. Real channels run from 0.0 to 1.0.
enum class Depth { Int8, Int16, Half, Float };

enum class Planes {
    One, ///< red, green, blue, alpha side by side
    Two, ///< red, green, blue in the first plane, alpha in the second
};

using PixelReader = void (*)(Pixel* pixel, const std::byte* plane0, const std::byte* plane1);
using PixelWriter = void (*)(const Pixel* pixel, std::byte* plane0, std::byte* plane1);

/// A picture. Row 0 is the bottom row. Pixels go through Read and Write, with the addresses of the pixel in
/// the two planes.
class K7HOST_API Image : public Parameter {
public:
    struct Plane {
        std::vector<std::byte*> Rows; ///< first pixel of each row; empty where there is no such plane
        std::ptrdiff_t Step = 0;      ///< bytes from pixel to pixel

        std::byte* Row(int y) const { return Rows.empty() ? nullptr : Rows[static_cast<std::size_t>(y)]; }
    };

    /// A new image, black and transparent; null where there is no memory or a side is below 1 or
    /// width x height leaves the signed 32-bit range. The caller owns it.
    [[nodiscard]] static Image* Make(int width, int height, Depth depth, Planes planes = Planes::One);

    /// An image over pixels that belong to someone else and outlive it, red, green, blue, alpha side by side;
    /// `rowBytes` lead from row to row and may be negative. Null where Make gives null. The caller owns it.
    [[nodiscard]] static Image* Over(std::byte* bottom, std::ptrdiff_t rowBytes, int width, int height,
                                     Depth depth);

    /// A new image of the size, aspect, depth and planes of the one under kTagImageLike, with undefined
    /// contents; null if allocation fails. The caller owns it.
    [[nodiscard]] static Image* NewImage(const TagList& tags);

    std::size_t Bytes() const { return bytes_; }

    /// A whole row as red, green, blue, alpha side by side, 4 x Width floats, where 1.0 is white. Half and
    /// float come and go unchanged, NaN and infinities too. What goes into an integer depth is clamped and
    /// rounded to the nearest, NaN to 0.
    void ReadRow(int y, float* rgba) const { rows_.read(*this, y, rgba); }
    void WriteRow(int y, const float* rgba) { rows_.write(*this, y, rgba); }

    /// The same as 4 x Width of the integers that Read and Write know, from 0 to 65535.
    void ReadRow(int y, std::uint16_t* rgba) const { rows_.readIntegers(*this, y, rgba); }
    void WriteRow(int y, const std::uint16_t* rgba) { rows_.writeIntegers(*this, y, rgba); }

    const int Width;
    const int Height;
    const Depth PixelDepth;
    const Planes PixelPlanes;
    double AspectX = 1.0; ///< pixel aspect
    double AspectY = 1.0;
    Plane PlaneAccess[2];
    PixelReader Read;
    PixelWriter Write;

    /// How rows of a format are read and written.
    struct RowAccess {
        void (*read)(const Image& image, int y, float* rgba);
        void (*write)(const Image& image, int y, const float* rgba);
        void (*readIntegers)(const Image& image, int y, std::uint16_t* rgba);
        void (*writeIntegers)(const Image& image, int y, const std::uint16_t* rgba);
    };

private:
    Image(int width, int height, Depth depth, Planes planes);
    static Image* MakeUnset(int width, int height, Depth depth, Planes planes);
    void LayOutOwn();

    RowAccess rows_;

    std::size_t bytes_ = 0;
    std::unique_ptr<std::byte[]> store_; ///< null where the pixels belong to someone else
};

} // namespace host
