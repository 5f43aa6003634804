#pragma once

#include "frame/Overlay.h"

#include <array>
#include <cmath>
#include <vector>

namespace k7::test {

/// Keeps the strokes that widgets draw, in pixels of a picture of the given size.
class RecordingSurface : public OverlaySurface {
public:
    struct Stroke {
        float x1, y1, x2, y2;
        float Length() const { return std::hypot(x2 - x1, y2 - y1); }
    };
    struct Loop {
        float left, bottom, right, top;
        bool IsAt(float x, float y, float half, float slack = 0.01f) const {
            return std::fabs(left - (x - half)) < slack && std::fabs(right - (x + half)) < slack &&
                   std::fabs(bottom - (y - half)) < slack && std::fabs(top - (y + half)) < slack;
        }
    };

    RecordingSurface(int width, int height)
        : width_(static_cast<float>(width))
        , height_(static_cast<float>(height)) {}

    void SetColour(int red, int green, int blue) override { Colours.push_back({red, green, blue}); }
    void DrawSegment(const float from[2], const float to[2]) override {
        Strokes.push_back({from[0] * width_, from[1] * height_, to[0] * width_, to[1] * height_});
    }
    void DrawLoop(const float (*points)[2], int count) override {
        Loop box = {INFINITY, INFINITY, -INFINITY, -INFINITY};
        for (int i = 0; i < count; ++i) {
            box.left = std::fmin(box.left, points[i][0] * width_);
            box.right = std::fmax(box.right, points[i][0] * width_);
            box.bottom = std::fmin(box.bottom, points[i][1] * height_);
            box.top = std::fmax(box.top, points[i][1] * height_);
        }
        Loops.push_back(box);
    }

    void Clear() {
        Strokes.clear();
        Loops.clear();
        Colours.clear();
    }

    std::vector<Stroke> Strokes;
    std::vector<Loop> Loops;
    std::vector<std::array<int, 3>> Colours;

private:
    float width_;
    float height_;
};

/// A view of 400 x 200 pixels over a recording surface.
struct RecordingView : OverlayK7 {
    RecordingView() {
        Surface = &surface;
        ImageWidth = 400;
        ImageHeight = 200;
    }
    RecordingSurface surface{400, 200};
};

} // namespace k7::test
