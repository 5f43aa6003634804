#pragma once

#include "media/sample/Canvas.h"

namespace media::sample {

/// Everything that does not move: sky, moon, houses, lamps, neon and the wet street with its reflections.
Canvas PaintStreet();

/// How strongly the wet street mirrors the picture at a place, and where the mirror image lies.
struct Mirror {
    float strength;
    float x, y;
};
Mirror MirrorAt(int x, int y);

} // namespace media::sample
