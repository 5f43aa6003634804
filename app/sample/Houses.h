#pragma once

#include "app/sample/Canvas.h"

namespace app::sample {

/// The town far away and the street's own houses before it, with lit windows, shops and chimneys.
void PaintHouses(Canvas& canvas);

} // namespace app::sample
