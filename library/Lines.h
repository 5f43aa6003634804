#pragma once

#include "library/K7Image.h"

#include <cstddef>

namespace k7 {

/// The rows or the columns of a picture, as filters that work along a line see them: sample n of line i is
/// the pixel at word i x across + n x along of the store. Holds for all pictures of one size.
struct Lines {
    static Lines Rows(const K7Image& image) {
        return {image.Width, K7Image::Channels, static_cast<std::ptrdiff_t>(image.Width) * K7Image::Channels};
    }
    static Lines Columns(const K7Image& image) {
        return {image.Height, static_cast<std::ptrdiff_t>(image.Width) * K7Image::Channels,
                K7Image::Channels};
    }

    int length; ///< samples in a line
    std::ptrdiff_t along;
    std::ptrdiff_t across;
};

} // namespace k7
