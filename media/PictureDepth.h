#pragma once

#include "host/Image.h"

#include <memory>

namespace media {

// Pictures in another form. Float rows carry the values, so nothing is rounded twice. All throw
// std::bad_alloc.

/// The same picture in another depth, in one plane.
std::shared_ptr<host::Image> Convert(const host::Image& image, host::Depth depth);

/// The picture itself where its depth holds all values of `depth`, otherwise a copy in one that holds those
/// of both.
std::shared_ptr<host::Image> AtLeast(std::shared_ptr<host::Image> image, host::Depth depth);

/// Multiplies the colours by alpha, or divides them where alpha is not 0; exact where alpha is 0 or 1.
void MultiplyByAlpha(host::Image& image);
void DivideByAlpha(host::Image& image);

/// The picture itself, or a copy in floats whose colours are 2^stops as bright.
std::shared_ptr<host::Image> Exposed(std::shared_ptr<host::Image> image, double stops);

/// The brightness of a colour (Rec. 709), which is the grey itself where all three are equal.
float BrightnessOf(const float* rgb);

/// Turns red into the brightness of the colour.
void TurnGrey(host::Image& image);

} // namespace media
