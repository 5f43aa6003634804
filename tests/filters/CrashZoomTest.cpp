#include "filters/CrashZoom.h"

#include "tests/support/CoreRunner.h"
#include "tests/support/FakeInput.h"
#include "tests/support/RecordingSurface.h"

#include <cmath>
#include <cstdlib>
#include <limits>

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

/// The walk as Bresenham's algorithm has it, sample by sample.
class PlainZoom {
public:
    PlainZoom(const K7Image& in, const Settings& settings)
        : in_(in)
        , shift_(settings.samples - 1)
        , aspectX_(static_cast<float>(settings.aspectX))
        , aspectY_(static_cast<float>(settings.aspectY))
        , clear_(static_cast<float>(in.Width * settings.clear * 0.5))
        , centreX_(static_cast<float>(in.Width * settings.centreX))
        , centreY_(static_cast<float>(in.Height * settings.centreY))
        , speed_(static_cast<float>(settings.speed / 100.0)) {}

    void Pixel(int x, int y, u16* out) const {
        const std::int64_t grid = std::int64_t{1} << shift_;
        std::int64_t cx = grid * x;
        std::int64_t cy = grid * y;
        std::int64_t endX = cx;
        std::int64_t endY = cy;
        FindEnd(x, y, &endX, &endY);

        std::int64_t major = std::abs(endX - cx);
        std::int64_t minor = std::abs(endY - cy);
        const int stepX = endX - cx >= 0 ? 1 : -1;
        const int stepY = endY - cy >= 0 ? 1 : -1;
        const bool steep = minor > major;
        if (steep) std::swap(major, minor);
        std::int64_t error = -major;
        std::uint32_t sums[4] = {};
        for (std::int64_t i = 0; i <= major; ++i) {
            const u16* sample = At(cx, cy);
            error += 2 * minor;
            for (int c = 0; c < 4; ++c) sums[c] += sample[c];
            if (error > 0) {
                (steep ? cx : cy) += steep ? stepX : stepY;
                error -= 2 * major;
            }
            (steep ? cy : cx) += steep ? stepY : stepX;
        }
        for (int c = 0; c < 4; ++c)
            out[c] = static_cast<u16>(sums[c] / static_cast<std::uint32_t>(major + 1));
    }

private:
    void FindEnd(int x, int y, std::int64_t* endX, std::int64_t* endY) const {
        const float grid = static_cast<float>(1 << shift_);
        const float dx = (static_cast<float>(x) - centreX_) / aspectY_;
        const float dy = (static_cast<float>(y) - centreY_) / aspectX_;
        const float d = std::sqrt(dy * dy + dx * dx);
        float e = d - clear_;
        if (static_cast<double>(e) < 0.0001) e = 0.0f;
        const float a = -(e * speed_);
        if (!(static_cast<double>(d) > 0.0001)) return;
        *endX += Trunc(std::ceil(dx / d * a * grid) / aspectX_);
        *endY += Trunc(std::ceil(dy / d * a * grid) / aspectY_);
    }

    const u16* At(std::int64_t fineX, std::int64_t fineY) const {
        const auto hold = [&](std::int64_t fine, int size) {
            return std::clamp<std::int64_t>(fine >> shift_, 0, size - 1);
        };
        return in_.Rows[hold(fineY, in_.Height)] + 4 * hold(fineX, in_.Width);
    }

    const K7Image& in_;
    int shift_;
    float aspectX_, aspectY_, clear_, centreX_, centreY_, speed_;
};

Picture Plain(const K7Image& in, const Settings& settings) {
    Picture out = K7Image::MakeCopy(in);
    const PlainZoom zoom(in, settings);
    for (int y = 0; y < in.Height; ++y)
        for (int x = 0; x < in.Width; ++x) zoom.Pixel(x, y, out->Rows[y] + 4 * x);
    return out;
}

void Give(CrashZoom& core, const Settings& settings) {
    core.Cntr.Value = {settings.centreX, settings.centreY};
    core.DimX.Value = settings.clear;
    core.Spee.Value = settings.speed;
    core.Samp.Value = settings.samples;
}

Picture RunZoom(K7Image& in, const Settings& settings, int threads = 1) {
    in.AspectX = settings.aspectX;
    in.AspectY = settings.aspectY;
    CoreRunner<CrashZoom> runner;
    Give(runner.core, settings);
    return runner.Run(in, threads);
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

TEST(CrashZoom, StandsStillWithoutSpeedAndWithinTheClearCircle) {
    const Picture in = Noise(40, 30);
    EXPECT_TRUE(Same(*RunZoom(*in, {.clear = 0.0, .speed = 0.0}), *in));
    EXPECT_TRUE(Same(*RunZoom(*in, {.clear = 2.0, .speed = 150.0}), *in));

    const Picture out = RunZoom(*in, {.clear = 0.4, .speed = 150.0});
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x)
            if (std::hypot(x - 20.0, y - 15.0) <= 8.0) {
                for (int c = 0; c < 4; ++c) EXPECT_EQ(out->Rows[y][4 * x + c], in->Rows[y][4 * x + c]);
            }
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

TEST(CrashZoom, FlatStaysFlat) {
    const Picture in = Flat(33, 21, 32767, 1, 12345, 9);
    EXPECT_TRUE(Same(*RunZoom(*in, {.centreX = 0.9, .clear = 0.0, .speed = 180.0, .samples = 4}), *in));
}

TEST(CrashZoom, ThreadsDoNotChangeTheFrame) {
    const Picture in = Noise(30, 23);
    const Settings settings{.clear = 0.1, .speed = 120.0, .samples = 2};
    const Picture alone = RunZoom(*in, settings);
    for (int threads : {2, 3, 8, 30}) EXPECT_TRUE(Same(*RunZoom(*in, settings, threads), *alone)) << threads;
}

TEST(CrashZoom, HostileValuesEndInAFrame) {
    const Picture in = Flat(24, 16, 20000);
    const double huge[] = {1e9,
                           -1e9,
                           1e30,
                           -1e30,
                           1e300,
                           std::numeric_limits<double>::infinity(),
                           std::numeric_limits<double>::quiet_NaN()};
    for (double value : huge) {
        const Settings cases[] = {{.clear = 0.0, .speed = value, .samples = 4},
                                  {.centreX = value, .speed = 50.0},
                                  {.centreX = value, .centreY = value, .speed = value},
                                  {.clear = value},
                                  {.clear = value, .speed = value},
                                  {.aspectX = value},
                                  {.speed = 50.0, .aspectY = 0.0},
                                  {.speed = 50.0, .samples = 1000}};
        for (const Settings& settings : cases) {
            const Picture out = RunZoom(*in, settings);
            for (int i = 0; i < 24 * 16 * 4; ++i) ASSERT_LE(out->Pixels[i], kFullScale) << value;
        }
    }
}

TEST(CrashZoom, ACentreBeyondAllMeasureLeavesThePicture) {
    const Picture in = Noise(24, 16);
    EXPECT_TRUE(Same(*RunZoom(*in, {.centreX = 1e30, .clear = 0.0}), *in));
    EXPECT_TRUE(Same(*RunZoom(*in, {.centreX = std::nan("")}), *in));
}

TEST(CrashZoom, LeavesAlphaAloneWhenAsked) {
    const Picture in = Noise(20, 14);
    CoreRunner<CrashZoom> runner;
    Give(runner.core, {.clear = 0.0, .speed = 80.0});
    runner.core.ProcessAlpha = false;
    const Picture want = Plain(*in, {.clear = 0.0, .speed = 80.0});
    want->CopyAlpha(in.get());
    EXPECT_TRUE(Same(*runner.Run(*in), *want));
}

TEST(CrashZoom, AbortedFrameIsNotTouched) {
    const Picture in = Noise(20, 14);
    CoreRunner<CrashZoom> runner;
    Give(runner.core, {.clear = 0.0, .speed = 80.0});
    runner.owner.Aborted = true;
    EXPECT_TRUE(Same(*runner.Run(*in), *in));
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

    Give(core, {.centreX = 0.25, .clear = 0.2});
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
