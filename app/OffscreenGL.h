#pragma once

#include <cstdint>
#include <vector>

namespace app {

/// OpenGL without a display: a context that draws into a picture of its own, with Mesa's software renderer
/// unless the environment asks for another. It is the thread's current context for its lifetime. One unit of
/// its coordinates is a pixel; (0, 0) is the lower left corner of the picture.
class OffscreenGL {
public:
    /// Throws std::runtime_error if there is no such context.
    OffscreenGL(int width, int height);
    ~OffscreenGL();
    OffscreenGL(const OffscreenGL&) = delete;
    OffscreenGL& operator=(const OffscreenGL&) = delete;

    /// Red, green, blue, alpha of each pixel, the bottom row first.
    std::vector<std::uint8_t> ReadPixels() const;

private:
    void OpenDisplay();
    void MakeContext();
    void MakePicture();
    void Close();

    const int width_, height_;
    void* display_ = nullptr;
    void* context_ = nullptr;
    unsigned frameBuffer_ = 0;
    unsigned colours_ = 0;
};

} // namespace app
