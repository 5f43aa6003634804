#include "filters/CrashZoom.h"

#include "tests/support/CoreRunner.h"
#include "tests/support/FakeInput.h"
#include "tests/support/RecordingSurface.h"

#include <cmath>
#include <cstdlib>

namespace k7::test {
namespace {

struct Settings {
    double centreX = 0.5;
    double centreY = 0.5;
    double clear = 0.4;
    double speed = 10.0;
    int samples = 1; ///< entry of the list, from 1
    double aspectX = 1.0;
    double aspectY = 1.0;
};

/// The mean along the walk as Bresenham's algorithm has it, sample by sample.
Picture Plain(const K7Image& in, const Settings& settings) {
    const int shift = settings.samples - 1;
    const float grid = static_cast<float>(1 << shift);
    const auto aspectX = static_cast<float>(settings.aspectX);
    const auto aspectY = static_cast<float>(settings.aspectY);
    const auto clear = static_cast<float>(in.Width * settings.clear * 0.5);
    const auto centreX = static_cast<float>(in.Width * settings.centreX);
    const auto centreY = static_cast<float>(in.Height * settings.centreY);
    const auto speed = static_cast<float>(settings.speed / 100.0);
    const auto hold = [&](std::int64_t fine, int size) {
        return std::clamp<std::int64_t>(fine >> shift, 0, size - 1);
    };
    return MakePicture(in.Width, in.Height, [&](int x, int y, int c) {
        // The way from the pixel in cells of the fine grid.
        const float dx = (static_cast<float>(x) - centreX) / aspectY;
        const float dy = (static_cast<float>(y) - centreY) / aspectX;
        const float d = std::sqrt(dy * dy + dx * dx);
        float e = d - clear;
        if (static_cast<double>(e) < 0.0001) e = 0.0f;
        const float a = -(e * speed);
        const bool moves = static_cast<double>(d) > 0.0001;
        std::int64_t major = moves ? Trunc(std::ceil(dx / d * a * grid) / aspectX) : 0;
        std::int64_t minor = moves ? Trunc(std::ceil(dy / d * a * grid) / aspectY) : 0;

        const int stepX = major >= 0 ? 1 : -1;
        const int stepY = minor >= 0 ? 1 : -1;
        major = std::abs(major);
        minor = std::abs(minor);
        const bool steep = minor > major;
        if (steep) std::swap(major, minor);
        std::int64_t cx = std::int64_t{x} << shift;
        std::int64_t cy = std::int64_t{y} << shift;
        std::int64_t error = -major;
        std::uint32_t sum = 0;
        for (std::int64_t i = 0; i <= major; ++i) {
            sum += in.Rows[hold(cy, in.Height)][4 * hold(cx, in.Width) + c];
            error += 2 * minor;
            if (error > 0) {
                (steep ? cx : cy) += steep ? stepX : stepY;
                error -= 2 * major;
            }
            (steep ? cy : cx) += steep ? stepY : stepX;
        }
        return static_cast<int>(sum / static_cast<std::uint32_t>(major + 1));
    });
}

Picture RunZoom(K7Image& in, const Settings& settings) {
    in.AspectX = settings.aspectX;
    in.AspectY = settings.aspectY;
    CoreRunner<CrashZoom> runner;
    runner.core.Cntr.Value = {settings.centreX, settings.centreY};
    runner.core.DimX.Value = settings.clear;
    runner.core.Spee.Value = settings.speed;
    runner.core.Samp.Value = settings.samples;
    return runner.Run(in, 3);
}

TEST(CrashZoom, IsBresenhamsWalkForEverySettingAndSize) {
    const int sizes[][2] = {{1, 1}, {1, 13}, {13, 1}, {31, 17}, {40, 60}};
    const Settings cases[] = {
        {},
        {.clear = 0.0, .speed = 100.0},
        {.clear = 0.1, .speed = -200.0, .samples = 2},
        {.centreX = 0.2, .centreY = 0.7, .clear = 0.1, .speed = 63.0, .samples = 3},
        {.centreX = 1.3, .centreY = -0.2, .clear = 0.0, .speed = 140.0, .samples = 4},
        {.clear = 0.0, .speed = -90.0, .samples = 2, .aspectX = 2.0},
        {.clear = 0.05, .speed = 75.0, .samples = 4, .aspectX = 1.0, .aspectY = 1.5},
        {.centreX = -3.0, .centreY = 0.5, .clear = 0.0, .speed = -30.0, .samples = 4},
        {.clear = 0.0, .speed = 3000.0, .samples = 4},
        {.clear = -1.0, .speed = 20.0, .samples = 1},
    };
    for (const auto& size : sizes)
        for (std::size_t i = 0; i < std::size(cases); ++i) {
            const Picture in = Noise(size[0], size[1]);
            EXPECT_TRUE(Same(*RunZoom(*in, cases[i]), *Plain(*in, cases[i])))
                << size[0] << " x " << size[1] << " case " << i;
        }
}

TEST(CrashZoom, EveryDirectionOfTheWalkFromTheMiddle) {
    const Picture in = Noise(15, 15, 3);
    for (double x = -0.5; x <= 1.5; x += 0.125)
        for (double y = -0.5; y <= 1.5; y += 0.125) {
            const Settings settings{.centreX = x, .centreY = y, .clear = 0.0, .speed = 90.0, .samples = 3};
            EXPECT_TRUE(Same(*RunZoom(*in, settings), *Plain(*in, settings))) << x << " " << y;
        }
}

TEST(CrashZoom, SumsOfVeryLongWalksWrapLikeWords32) {
    const Picture in = Flat(4, 3, 32767, 20000, 1, 0);
    for (double speed : {2e6, 3e7}) { // some 300000 and 5 million samples a pixel
        const Settings settings{.clear = 0.0, .speed = speed, .samples = 4};
        EXPECT_TRUE(Same(*RunZoom(*in, settings), *Plain(*in, settings))) << speed;
    }
}

TEST(CrashZoom, StandsStillWithoutSpeedOrCentreAndWithinTheClearCircle) {
    const Picture in = Noise(40, 30);
    for (const Settings& still :
         {Settings{.clear = 0.0, .speed = 0.0}, Settings{.clear = 2.0, .speed = 150.0},
          Settings{.centreX = 1e30, .clear = 0.0}, Settings{.centreX = std::nan("")}})
        EXPECT_TRUE(Same(*RunZoom(*in, still), *in)) << still.centreX << " " << still.clear;
}

TEST(CrashZoom, WalksTheDistanceBeyondTheClearCircle) {
    // Bright pixels from column 60 on. Column 80 lies 30 pixels from the centre: with a speed of 100 percent
    // and no clear circle its 31 samples are columns 80 down to 50, of which 21 are bright.
    const Picture in = MakePicture(100, 1, [](int x, int, int) { return x >= 60 ? 31000 : 0; });
    const Picture out = RunZoom(*in, {.centreY = 0.0, .clear = 0.0, .speed = 100.0});
    EXPECT_EQ(out->Rows[0][4 * 80], 31000 * 21 / 31);
    // A clear radius of 20 pixels leaves a way of 10: all bright.
    EXPECT_EQ(RunZoom(*in, {.centreY = 0.0, .clear = 0.4, .speed = 100.0})->Rows[0][4 * 80], 31000);
    // Away from the centre the edge repeats.
    EXPECT_EQ(RunZoom(*in, {.centreY = 0.0, .clear = 0.0, .speed = -200.0})->Rows[0][4 * 80], 31000);
}

TEST(CrashZoom, WidgetsFollowTheControlsAndBack) {
    CrashZoom core;
    RecordingSurface surface(400, 200);
    FakeInput centre("Centre");
    FakeInput radius("Clear Radius");
    radius.High = 10.0;
    OverlayK7& view = core;
    view.Surface = &surface;
    view.ImageWidth = 400;
    view.ImageHeight = 200;
    view.AspectX = 2.0f;
    core.CentreOverlay.Owner = core.ClearOverlay.Owner = &core;
    core.CentreOverlay.Link.Input[0] = &centre;
    core.CentreOverlay.Link.Control[0] = &core.Cntr;
    core.ClearOverlay.Link.Input[0] = core.ClearOverlay.Link.Input[1] = &radius;
    core.ClearOverlay.Link.Control[2] = core.ClearOverlay.Link.Control[3] = &core.DimX;

    core.Cntr.Shown = {0.25, 0.5};
    core.DimX.Shown = 0.2;
    core.Draw();
    ASSERT_EQ(surface.Loops.size(), 2u);
    EXPECT_TRUE(surface.Loops[0].IsAt(100.0f, 100.0f, 4.0f));
    EXPECT_TRUE(surface.Loops[1].IsAt(140.0f, 100.0f, 4.0f)); // half of 0.2 widths to the right
    float top = 0.0f;
    for (const auto& stroke : surface.Strokes) top = std::fmax(top, stroke.y1);
    EXPECT_NEAR(top, 180.0f, 0.5f); // pixels twice as wide: twice as many rows

    core.Event(kOverlayPress, 140.0f, 100.0f);
    core.Event(kOverlayDrag, 160.0f, 100.0f);
    core.Event(kOverlayRelease, 160.0f, 100.0f);
    EXPECT_NEAR(core.DimX.Value, 2.0 * 60.0 / 400.0, 1e-6);
    EXPECT_EQ(radius.Writes, 1);
    EXPECT_EQ(centre.Writes, 0);

    surface.Clear();
    core.CentreOverlay.Visible = core.ClearOverlay.Visible = false;
    core.Draw();
    EXPECT_TRUE(surface.Loops.empty());
}

} // namespace
} // namespace k7::test
