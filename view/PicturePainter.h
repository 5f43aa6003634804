#pragma once

#include "view/Placement.h"

#include <QOpenGLShaderProgram>

#include "host/Image.h"

#include <memory>

namespace view {

/// What of a picture is shown.
enum class Channels { Colour, Red, Green, Blue, Alpha, Luminance, OverChecks };

/// How a picture is shown. The picture itself stays as it is.
struct Showing {
    Channels channels = Channels::Colour;
    double exposure = 0.0; ///< stops
    double gamma = 1.0;
    double wipe = 1.0; ///< part of the picture's width that shows the result; the source is right of it
};

/// Draws two pictures, before and after, with OpenGL 2.1 into a view whose units are pixels of the screen.
/// All operations need the view's context.
class PicturePainter {
public:
    /// False where there is no such OpenGL.
    [[nodiscard]] bool Start();
    void Stop(); ///< gives all back

    void Paint(const std::shared_ptr<const host::Image>& before,
               const std::shared_ptr<const host::Image>& after, const Placement& placement,
               const QSizeF& view, const Showing& showing);

private:
    /// A picture in the memory of OpenGL, taken there when it changes.
    struct Texture {
        std::shared_ptr<const host::Image> of;
        unsigned name = 0;
        void Take(const std::shared_ptr<const host::Image>& image);
    };

    void Bind(const Texture& texture, double zoom) const;

    std::unique_ptr<QOpenGLShaderProgram> plain_, full_; ///< plain: colours as they are
    Texture before_, after_;
};

} // namespace view
