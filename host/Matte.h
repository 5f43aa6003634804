#pragma once

#include "host/Image.h"

#include <vector>

namespace host {

/// What of a mask counts.
enum class MatteChannel { Alpha, Red, Green, Blue, Luminance };

/// A channel of a mask, fitted to a size: between its pixels where it grows, their mean where it shrinks.
/// Values are clamped to 0 to 1, NaN is 0; rows from the bottom. Alpha of a picture without alpha is its
/// luminance (Rec. 709). Throws std::bad_alloc.
std::vector<float> MakeMatte(const Image& mask, MatteChannel channel, int width, int height);

} // namespace host
