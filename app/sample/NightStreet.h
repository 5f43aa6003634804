#pragma once

#include "app/sample/Canvas.h"

namespace app::sample {

/// All that stands still: sky, moon, houses, lamps, neon and the wet street with its reflections.
Canvas PaintStreet();

/// How strongly the wet street mirrors the picture at a place, and where the mirror image lies.
struct Mirror {
    float strength;
    float x, y;
};
Mirror MirrorAt(int x, int y);

} // namespace app::sample
