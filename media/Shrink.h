#pragma once

#include "host/Image.h"

namespace media {

/// The means of squares of divisor x divisor pixels, in the depth of the picture; null where allocation
/// fails. The caller owns it.
[[nodiscard]] host::Image* Shrunk(const host::Image& picture, int divisor);

} // namespace media
