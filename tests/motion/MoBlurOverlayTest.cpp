#include "motion/MoBlur.h"

#include "tests/motion/PlainMotion.h"
#include "tests/motion/Shot.h"
#include "tests/support/RecordingSurface.h"

#include <atomic>
#include <thread>

namespace k7::test {
namespace {

/// A shot under a preview of its own size.
struct DrawnShot : Shot {
    DrawnShot() : surface(120, 90) {
        core.Surface = &surface;
        core.ImageWidth = 120;
        core.ImageHeight = 90;
        core.CentreWidget.Owner = core.RegionWidget.Owner = &core;
        core.DisplayVectors.Value = 1;
        core.CentreWidget.Visible = core.RegionWidget.Visible = false;
    }
    std::size_t Strokes() {
        surface.Clear();
        core.Draw();
        return surface.Strokes.size();
    }
    RecordingSurface surface;
};

TEST(MoBlurOverlay, DrawsAnArrowForEveryTenthVector) {
    DrawnShot shot;
    EXPECT_EQ(shot.Strokes(), 0u);
    shot.Frame(2);
    const PlainField field =
        PlainEstimate(*shot.clip.Frames[1], *shot.clip.Frames[2], 2.5f, 655.34f, {30, 90, 15, 75});
    ASSERT_GT(shot.Strokes(), 0u);
    EXPECT_EQ(shot.surface.Colours, (std::vector<std::array<int, 3>>{{255, 255, 255}}));
    std::size_t next = 0;
    for (int y = 0; y < 90; y += 10)
        for (int x = 0; x < 120; x += 10) {
            const float dx = field.dx.At(x, y), dy = field.dy.At(x, y);
            if (dx == 0.0f) continue;
            ASSERT_LT(next + 2, shot.surface.Strokes.size());
            const auto& shaft = shot.surface.Strokes[next];
            EXPECT_NEAR(shaft.x1, x, 1e-3);
            EXPECT_NEAR(shaft.y1, y, 1e-3);
            EXPECT_NEAR(shaft.x2, static_cast<float>(x) + dx, 1e-3);
            EXPECT_NEAR(shaft.y2, static_cast<float>(y) + dy, 1e-3);
            // Both barbs are sqrt(3 x 3 + 1.8 x 1.8) long and meet in the tip.
            EXPECT_NEAR(shot.surface.Strokes[next + 1].Length(), 3.4986f, 1e-3);
            EXPECT_NEAR(shot.surface.Strokes[next + 1].x2, shaft.x2, 1e-3);
            EXPECT_NEAR(shot.surface.Strokes[next + 2].Length(), 3.4986f, 1e-3);
            EXPECT_NEAR(shot.surface.Strokes[next + 2].x1, shaft.x2, 1e-3);
            next += 3;
        }
    EXPECT_EQ(next, shot.surface.Strokes.size());
}

TEST(MoBlurOverlay, ShowsVectorsOnlyOfABlurredFrame) {
    DrawnShot shot;
    shot.Frame(2);
    EXPECT_GT(shot.Strokes(), 0u);
    shot.core.ApplyMotionBlur.Value = 0;
    shot.Frame(2);
    EXPECT_EQ(shot.Strokes(), 0u);
    shot.core.ApplyMotionBlur.Value = 1;
    shot.core.DisplayVectors.Value = 0;
    shot.Frame(2);
    EXPECT_EQ(shot.Strokes(), 0u);
}

TEST(MoBlurOverlay, PutsTheWidgetsOnTheRegion) {
    DrawnShot shot;
    shot.core.CentreWidget.Visible = shot.core.RegionWidget.Visible = true;
    shot.core.Centre.Shown = {0.25, 0.5};
    shot.core.ScaleX.Shown = 0.3;
    shot.core.ScaleY.Shown = 0.6;
    shot.core.MatchScales.Value = 1;
    EXPECT_GT(shot.Strokes(), 0u);
    EXPECT_EQ(shot.core.CentreWidget.X, 0.25f);
    EXPECT_EQ(shot.core.RegionWidget.X, 0.25f);
    EXPECT_EQ(shot.core.RegionWidget.Width, 0.3f);
    EXPECT_EQ(shot.core.RegionWidget.Height, 0.6f);
    EXPECT_TRUE(shot.core.RegionWidget.Square);
}

TEST(MoBlurOverlay, MayDrawWhileFramesAreInProgress) {
    DrawnShot shot;
    std::atomic<bool> done = false;
    std::thread view([&] {
        while (!done) shot.core.Draw();
    });
    const Picture want = Shot().Frame(2);
    for (int i = 0; i < 6; ++i) EXPECT_TRUE(Same(*shot.Frame(2), *want));
    done = true;
    view.join();
}

} // namespace
} // namespace k7::test
