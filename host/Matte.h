#pragma once

#include "host/Image.h"

#include <vector>

namespace host {

/// Which value of a mask is used.
enum class MatteChannel { Alpha, Red, Green, Blue, Luminance };

/// A channel of a mask, fitted to a size: interpolated where it grows, averaged where it shrinks. Values are
/// clamped to 0 to 1, NaN becomes 0; rows from the bottom. Alpha of a picture without alpha is its luminance
/// (Rec. 709). Throws std::bad_alloc.
std::vector<float> MakeMatte(const Image& mask, MatteChannel channel, int width, int height);

} // namespace host
