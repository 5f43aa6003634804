#pragma once

#include "baselib/Buffer.h"
#include "library/K7Image.h"

namespace k7 {

/// A pixel of the light map that is not black, with its samples, none of them negative.
struct Light {
    int X, Y;
    float R, G, B;
};

/// Columns Left to Right - 1 of rows Bottom to Top - 1.
struct PixelBox {
    int Width() const { return Right - Left; }
    int Height() const { return Top - Bottom; }

    int Left, Bottom, Right, Top;
};

/// The lights of a light map in scan order: rows from the bottom, each from the left.
class LightList {
public:
    /// Takes the lights within `box`, which lies inside the map; the allocator records their memory under
    /// `source`. False if allocation fails.
    template <class Sample>
    [[nodiscard]] bool Collect(const PictureK7<Sample>& lightMap, const PixelBox& box, const char* source);

    const Light* begin() const { return lights_.begin(); }
    const Light* end() const { return lights_.end(); }
    std::size_t size() const { return lights_.size(); }

    /// The smallest box around the lights; 0 by 0 without lights.
    PixelBox Bounds() const;

private:
    Buffer<Light> lights_;
};

/// A cell of the planes into which lights are summed. Red, green and blue are adjacent because a streak
/// touches cells all over the planes, each of them a cache miss; the fourth number pads the vector.
template <class Real>
struct LightSum {
    Real R, G, B, Unused;
};

/// Four numbers as the compiler's vector; any cell or table entry can be seen as one.
template <class Real>
struct Lanes {
    typedef Real Vector __attribute__((vector_size(4 * sizeof(Real)), aligned(alignof(Real)), may_alias));

    template <class Four>
    static Vector& Of(Four& four) {
        static_assert(sizeof(Four) == 4 * sizeof(Real));
        return reinterpret_cast<Vector&>(four);
    }
    template <class Four>
    static const Vector& Of(const Four& four) {
        static_assert(sizeof(Four) == 4 * sizeof(Real));
        return reinterpret_cast<const Vector&>(four);
    }
};

/// The planes over the part of the frame that light can reach, row by row. A full-scale word with a gain of 1
/// adds 32767.
template <class Real>
struct LightPlanes {
    LightSum<Real>& At(int x, int y) const {
        return Cells[static_cast<std::size_t>(y - Box.Bottom) * static_cast<std::size_t>(Box.Width()) +
                     static_cast<std::size_t>(x - Box.Left)];
    }

    LightSum<Real>* Cells;
    PixelBox Box;
};

} // namespace k7
