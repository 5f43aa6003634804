#pragma once

#include "library/K7Image.h"

#include <cstddef>

namespace k7 {

/// The rows or the columns of a picture, as filters that work along a line see them: sample n of line i is
/// the pixel at sample i x across + n x along of the store. Holds for all pictures of one size.
struct Lines {
    template <class Sample>
    static Lines Rows(const PictureK7<Sample>& image) {
        return {image.Width, image.Channels, static_cast<std::ptrdiff_t>(image.Width) * image.Channels};
    }
    template <class Sample>
    static Lines Columns(const PictureK7<Sample>& image) {
        return {image.Height, static_cast<std::ptrdiff_t>(image.Width) * image.Channels, image.Channels};
    }

    int length; ///< samples in a line
    std::ptrdiff_t along;
    std::ptrdiff_t across;
};

} // namespace k7
