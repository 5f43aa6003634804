#pragma once

namespace k7 {

/// One vector per pixel, row by row: how far the picture's content there moves from one frame to the next, in
/// pixels. The planes belong to the estimator that made them.
struct MotionField {
    int Width = 0;
    int Height = 0;
    const float* Dx = nullptr;
    const float* Dy = nullptr;
};

} // namespace k7
