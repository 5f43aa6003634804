#pragma once

#include <OpenImageIO/imageio.h>

namespace media {

/// A rectangle of a file's pixels; y grows downward.
struct Window {
    int left, top, right, bottom; ///< right and bottom are exclusive

    bool Holds(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }
    bool Holds(const Window& w) const {
        return w.left >= left && w.top >= top && w.right <= right && w.bottom <= bottom;
    }
};

/// The rectangle in which a file has pixels.
inline Window DataWindow(const OIIO::ImageSpec& spec) {
    return {spec.x, spec.y, spec.x + spec.width, spec.y + spec.height};
}

/// The frame: the window that is shown.
inline Window DisplayWindow(const OIIO::ImageSpec& spec) {
    return {spec.full_x, spec.full_y, spec.full_x + spec.full_width, spec.full_y + spec.full_height};
}

} // namespace media
