// What the widgets draw, on systems where there is OpenGL without a display.
#ifdef K7_OFFSCREEN_GL

#include "app/OffscreenGL.h"
#include "tests/ofx/Viewport.h"

#include <GL/gl.h>

namespace k7::test::ofx {
namespace {

constexpr int kZoom = 5, kWidth = 61 * kZoom, kHeight = 43 * kZoom;

struct Screen {
    std::vector<std::uint8_t> rgba = std::vector<std::uint8_t>();

    /// Whether a colour is found within two pixels of a place.
    bool Has(int x, int y, std::array<int, 3> colour) const {
        for (int dy = -2; dy <= 2; ++dy)
            for (int dx = -2; dx <= 2; ++dx) {
                const std::uint8_t* at = &rgba[static_cast<std::size_t>(4 * ((y + dy) * kWidth + x + dx))];
                if (at[0] == colour[0] && at[1] == colour[1] && at[2] == colour[2]) return true;
            }
        return false;
    }
};

TEST(OfxDraw, WidgetsLieOnThePictureAndRestoreOpenGL) {
    Opened opened;
    const app::OffscreenGL gl(kWidth, kHeight);
    for (const int offset : {0, -17}) {
        SCOPED_TRACE(offset);
        PluginStruct* plugin = FindPlugin("CrashZoom");
        Scene scene(opened, plugin, {.x = offset, .y = offset});
        scene["Cntr"].value.real = {0.4, 0.5};
        ASSERT_EQ(kOk, scene.Create());
        {
            Viewport view(opened, plugin, scene);
            glClearColor(0, 0, 0, 1);
            glClear(GL_COLOR_BUFFER_BIT);
            glColor3f(0.25f, 0.5f, 0.75f);
            glPushMatrix();
            glScalef(kZoom, kZoom, 1.0f);
            glTranslatef(static_cast<float>(-offset), static_cast<float>(-offset), 0.0f);
            EXPECT_EQ(kOk, view.Event("Draw"));
            glPopMatrix();
            EXPECT_EQ(static_cast<GLenum>(GL_NO_ERROR), glGetError());
            float colour[4];
            glGetFloatv(GL_CURRENT_COLOR, colour);
            EXPECT_EQ(0.25f, colour[0]);
            GLint depth = 0;
            glGetIntegerv(GL_ATTRIB_STACK_DEPTH, &depth);
            EXPECT_EQ(0, depth);

            const Screen screen{gl.ReadPixels()};
            const int x = kWidth * 4 / 10, y = kHeight / 2, radius = kWidth * 2 / 10;
            EXPECT_TRUE(screen.Has(x + 17, y, {255, 255, 255})) << "an arm of the cross";
            EXPECT_TRUE(screen.Has(x - radius, y, {255, 255, 0})) << "the left of the circle";
            EXPECT_TRUE(screen.Has(x + radius, y, {255, 255, 0})) << "the right of the circle";
            EXPECT_FALSE(screen.Has(x + radius / 2, y + 20, {255, 255, 0}));
        }
        scene.Destroy();
    }
}

} // namespace
} // namespace k7::test::ofx

#endif
