#pragma once

#include "media/sample/Canvas.h"

namespace media::sample {

/// The town far away and the street's own houses before it, with lit windows, shops and chimneys.
void PaintHouses(Canvas& canvas);

} // namespace media::sample
