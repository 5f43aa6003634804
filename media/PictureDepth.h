#pragma once

#include "host/Image.h"

#include <memory>

namespace media {

// Conversions of pictures. Values pass through float rows, so nothing is rounded twice. All throw
// std::bad_alloc.

/// The same picture in another depth, in one plane.
std::shared_ptr<host::Image> Convert(const host::Image& image, host::Depth depth);

/// The picture itself if its depth holds all values of `depth`, otherwise a copy in one that holds those of
/// both.
std::shared_ptr<host::Image> AtLeast(std::shared_ptr<host::Image> image, host::Depth depth);

/// Multiplies the colours by alpha, or divides them if alpha is not 0; exact if alpha is 0 or 1.
void MultiplyByAlpha(host::Image& image);
void DivideByAlpha(host::Image& image);

/// The picture itself, or a copy in floats whose colours are 2^stops as bright.
std::shared_ptr<host::Image> Exposed(std::shared_ptr<host::Image> image, double stops);

/// The brightness of a colour (Rec. 709), which is the grey itself where all three are equal.
float BrightnessOf(const float* rgb);

/// Replaces red by the brightness of the colour.
void TurnGrey(host::Image& image);

} // namespace media
