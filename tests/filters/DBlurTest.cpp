#include "filters/DBlur.h"

#include "filters/BlurKernel.h"
#include "tests/support/CoreRunner.h"
#include "tests/support/FailingMemory.h"
#include "tests/support/FakeInput.h"
#include "tests/support/RecordingSurface.h"

#include <cmath>
#include <limits>
#include <vector>

namespace k7::test {
namespace {

constexpr double kRadians = 0.017453292522222223;

std::vector<BlurKernel> Kernel(float fraction, float degrees, int capacity, bool centred) {
    std::vector<BlurKernel> kernel(static_cast<std::size_t>(capacity));
    int count = 0;
    MakeBlurKernel(fraction, degrees, capacity, centred, &count, kernel.data());
    kernel.resize(static_cast<std::size_t>(count));
    return kernel;
}

/// The kernel without any cell of the bounding box left out.
std::vector<BlurKernel> PlainKernel(float fraction, float degrees, int capacity, bool centred) {
    double angle = degrees * kRadians;
    if (std::fabs(fraction) < 0.0001f)
        fraction = 0.0001f;
    else if (fraction < 0.0f)
        angle = degrees * -kRadians;
    const float length = static_cast<float>(capacity) * std::min(std::fabs(fraction), 1.0f);
    const float ox = centred ? static_cast<float>(std::cos(angle) * length * -0.5) : 0.0f;
    const float oy = centred ? static_cast<float>(std::sin(angle) * length * -0.5) : 0.0f;
    const float s = static_cast<float>(std::sin(angle));
    const float c = static_cast<float>(std::cos(angle));
    const float corners[4][2] = {{ox + s * 0.5f, oy - c * 0.5f},
                                 {ox + c * length + s * 0.5f, oy + s * length - c * 0.5f},
                                 {ox + c * length - s * 0.5f, oy + s * length + c * 0.5f},
                                 {ox - s * 0.5f, oy + c * 0.5f}};
    std::vector<BlurKernel> kernel;
    float total = 0.0f;
    const int reach = capacity + 2;
    for (int y = -reach; y <= reach; ++y)
        for (int x = -reach; x <= reach; ++x) {
            Polygon cell;
            cell.Count = 4;
            std::copy_n(corners[0], 8, cell.Corner[0]);
            const float fx = static_cast<float>(x);
            const float fy = static_cast<float>(y);
            if (!ClipToCell(&cell, fx - 0.5f, fx + 0.5f, fy - 0.5f, fy + 0.5f)) continue;
            float sum = 0.0f;
            for (int i = 0; i < cell.Count; ++i) {
                const float* corner = cell.Corner[i];
                const float* previous = cell.Corner[(i + cell.Count - 1) % cell.Count];
                sum += (corner[1] + previous[1]) * (previous[0] - corner[0]);
            }
            const float area = static_cast<float>(std::fabs(sum) * 0.5);
            if (area <= 0.001f || static_cast<int>(kernel.size()) >= capacity - 1) continue;
            kernel.push_back({static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), area});
            total += area;
        }
    if (total > 0.00001)
        for (BlurKernel& entry : kernel) entry.Weight *= 1.0f / total;
    return kernel;
}

void ExpectEntries(const std::vector<BlurKernel>& kernel, const std::vector<BlurKernel>& want) {
    ASSERT_EQ(kernel.size(), want.size());
    for (std::size_t i = 0; i < want.size(); ++i) {
        EXPECT_EQ(kernel[i].Dx, want[i].Dx) << i;
        EXPECT_EQ(kernel[i].Dy, want[i].Dy) << i;
        EXPECT_FLOAT_EQ(kernel[i].Weight, want[i].Weight) << i;
    }
}

TEST(BlurKernel, CentredStreakOfThreePixels) {
    const float third = 1.0f / 3.0f;
    ExpectEntries(Kernel(0.03f, 0.0f, 100, true), {{-1, 0, third}, {0, 0, third}, {1, 0, third}});
}

TEST(BlurKernel, StreakThatStartsInThePixel) {
    const float third = 1.0f / 3.0f;
    const float sixth = 1.0f / 6.0f;
    ExpectEntries(Kernel(0.03f, 0.0f, 100, false),
                  {{0, 0, sixth}, {1, 0, third}, {2, 0, third}, {3, 0, sixth}});
    ExpectEntries(Kernel(-0.03f, 180.0f, 100, false), // a negative length turns the angle round
                  Kernel(0.03f, -180.0f, 100, false));
}

TEST(BlurKernel, UprightStreak) {
    const float third = 1.0f / 3.0f;
    ExpectEntries(Kernel(0.03f, 90.0f, 100, true), {{0, -1, third}, {0, 0, third}, {0, 1, third}});
}

TEST(BlurKernel, WithoutLengthOnlyThePixelItself) {
    ExpectEntries(Kernel(0.0f, 33.0f, 719, true), {{0, 0, 1.0f}});
    EXPECT_TRUE(Kernel(0.0f, 33.0f, 9, true).empty()); // the sliver covers less than a thousandth
}

TEST(BlurKernel, WeightsAddUpToOneAtEveryAngleAndLength) {
    for (float degrees = -360.0f; degrees <= 720.0f; degrees += 7.3f)
        for (float fraction : {0.002f, 0.05f, 0.3f, 1.0f, 40.0f}) {
            float sum = 0.0f;
            for (const BlurKernel& entry : Kernel(fraction, degrees, 300, true)) sum += entry.Weight;
            EXPECT_NEAR(sum, 1.0f, 1e-5f) << degrees << " " << fraction;
        }
}

TEST(BlurKernel, LeavingOutCellsChangesNoBit) {
    for (int capacity : {2, 5, 40, 130})
        for (float degrees :
             {0.0f, 0.01f, 17.0f, 45.0f, 89.99f, 90.0f, 135.0f, 180.0f, 211.0f, 270.0f, 359.0f})
            for (float fraction : {-0.4f, 0.0001f, 0.02f, 0.37f, 1.0f})
                for (bool centred : {false, true}) {
                    const auto got = Kernel(fraction, degrees, capacity, centred);
                    const auto want = PlainKernel(fraction, degrees, capacity, centred);
                    ASSERT_EQ(got.size(), want.size()) << capacity << " " << degrees << " " << fraction;
                    for (std::size_t i = 0; i < want.size(); ++i) {
                        ASSERT_EQ(got[i].Dx, want[i].Dx);
                        ASSERT_EQ(got[i].Dy, want[i].Dy);
                        ASSERT_EQ(got[i].Weight, want[i].Weight);
                    }
                }
}

TEST(BlurKernel, AFullArrayCutsTheFarEnd) {
    const auto diagonal = Kernel(0.1f, 45.0f, 1000, true); // 100 pixels long: a little over two cells a pixel
    EXPECT_NEAR(static_cast<double>(diagonal.size()), 215.0, 2.0);
    EXPECT_EQ(Kernel(0.6f, 45.0f, 1000, true).size(), 999u);
    EXPECT_EQ(Kernel(1.0f, 0.0f, 1000, true).size(), 999u); // of 1001 cells
}

TEST(BlurKernel, PolygonsAreCutByEachSide) {
    Polygon square;
    square.Count = 4;
    const float corners[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
    std::copy_n(corners[0], 8, square.Corner[0]);

    Polygon half;
    ClipHalfPlane(square, &half, 0, 1.0f, 0.25f); // x <= 0.25
    ASSERT_EQ(half.Count, 4);
    for (int i = 0; i < 4; ++i) EXPECT_LE(half.Corner[i][0], 0.25f);

    Polygon cell = square;
    EXPECT_TRUE(ClipToCell(&cell, -3.0f, 3.0f, -3.0f, 3.0f)); // wholly inside
    EXPECT_EQ(cell.Count, 4);
    EXPECT_FALSE(ClipToCell(&cell, 2.0f, 3.0f, -3.0f, 3.0f));
    EXPECT_EQ(cell.Count, 0);
}

// The tool.

struct Settings {
    double length = 10.0;
    double angle = 0.0;
    int centred = 1;
    double aspectX = 1.0;
    double aspectY = 1.0;
};

void Give(DBlur& core, const Settings& settings) {
    core.Leng.Value = settings.length;
    core.Angl.Value = settings.angle;
    core.Cent.Value = settings.centred;
}

Picture RunBlur(K7Image& in, const Settings& settings, int threads = 1) {
    in.AspectX = settings.aspectX;
    in.AspectY = settings.aspectY;
    CoreRunner<DBlur> runner;
    Give(runner.core, settings);
    return runner.Run(in, threads);
}

/// Each pixel's sum by itself, with a kernel for the frame's angle.
Picture Plain(const K7Image& in, const Settings& settings, float pixelAngle) {
    const int capacity = std::max(in.Width, in.Height) - 1;
    const float fraction =
        static_cast<float>(settings.length / 100.0 * in.Width) / static_cast<float>(capacity);
    const auto kernel = PlainKernel(fraction, pixelAngle, capacity, settings.centred);
    return MakePicture(in.Width, in.Height, [&](int x, int y, int c) {
        float sum = 0.0f;
        for (const BlurKernel& entry : kernel) {
            const int yy = std::clamp(y + entry.Dy, 0, in.Height - 1);
            const int xx = std::clamp(x + entry.Dx, 0, in.Width - 1);
            sum += static_cast<float>(in.Rows[yy][4 * xx + c]) * entry.Weight;
        }
        return static_cast<int>(sum + 0.5);
    });
}

TEST(DBlur, IsTheWeightedSumOnEverySize) {
    const int sizes[][2] = {{1, 9}, {9, 1}, {2, 1}, {7, 5}, {8, 8}, {33, 20}, {20, 41}};
    for (const auto& size : sizes)
        for (double length : {3.0, 40.0, 100.0, 500.0, -60.0})
            for (int centred : {0, 1}) {
                const Picture in = Noise(size[0], size[1]);
                const Settings settings{.length = length, .centred = centred};
                EXPECT_TRUE(Same(*RunBlur(*in, settings), *Plain(*in, settings, 0.0f)))
                    << size[0] << " x " << size[1] << " length " << length;
            }
}

TEST(DBlur, SquarePixelsKeepTheAngleInEveryQuadrant) {
    const Picture in = Noise(40, 27);
    for (double angle : {30.0, 100.0, 135.0, 200.0, 290.0, 340.0}) {
        // The way through tangent and arc tangent, as the angle goes from screen to pixels.
        const double turned = std::atan(std::tan(angle * kRadians)) * 57.29577950560105;
        const float quadrant = angle < 90.0 ? 0.0f : angle < 270.0 ? 180.0f : 360.0f;
        const float pixelAngle = static_cast<float>(turned) + quadrant;
        EXPECT_NEAR(pixelAngle, angle, 1e-3);
        const Settings settings{.length = 30.0, .angle = angle, .centred = 0};
        EXPECT_TRUE(Same(*RunBlur(*in, settings), *Plain(*in, settings, pixelAngle))) << angle;
    }
}

/// Where the light of a single bright pixel goes, from that pixel: the mean of the places it is seen at.
std::pair<double, double> DirectionOfSmear(const Settings& settings) {
    const Picture in = MakePicture(61, 61, [](int x, int y, int) { return x == 30 && y == 30 ? 32767 : 0; });
    const Picture out = RunBlur(*in, settings);
    double x = 0.0;
    double y = 0.0;
    double sum = 0.0;
    for (int v = 0; v < 61; ++v)
        for (int u = 0; u < 61; ++u) {
            const double word = out->Rows[v][4 * u];
            sum += word;
            x += word * (u - 30);
            y += word * (v - 30);
        }
    return {x / sum, y / sum};
}

TEST(DBlur, LightIsDrawnAgainstTheAngle) {
    // A pixel gathers along the angle as it goes out from it, so light moves the other way, by half the
    // length.
    for (double angle : {0.0, 45.0, 90.0, 150.0, 180.0, 225.0, 270.0, 300.0}) {
        const auto [x, y] = DirectionOfSmear({.length = 30.0, .angle = angle, .centred = 0});
        EXPECT_NEAR(x, -9.15 * std::cos(angle * kRadians), 0.1) << angle;
        EXPECT_NEAR(y, -9.15 * std::sin(angle * kRadians), 0.1) << angle;
    }
}

TEST(DBlur, WidePixelsTurnTheStreakButKeepItsLength) {
    const auto [x, y] = DirectionOfSmear({.length = 30.0, .angle = 45.0, .centred = 0, .aspectX = 2.0});
    EXPECT_NEAR(y / x, 2.0, 0.02);
    EXPECT_NEAR(std::hypot(x, y), 9.15, 0.1);
}

TEST(DBlur, ThreadsDoNotChangeTheFrame) {
    const Picture in = Noise(50, 43);
    const Settings settings{.length = 37.0, .angle = 33.5};
    const Picture alone = RunBlur(*in, settings);
    for (int threads : {2, 3, 8, 60}) EXPECT_TRUE(Same(*RunBlur(*in, settings, threads), *alone)) << threads;
}

TEST(DBlur, FlatStaysFlatUpToRounding) {
    const Picture in = Flat(80, 45, 32767, 1, 12345, 0);
    for (double angle : {0.0, 33.0, 90.0, 250.0}) {
        const Picture out = RunBlur(*in, {.length = 60.0, .angle = angle});
        for (int i = 0; i < 80 * 45 * 4; ++i) EXPECT_NEAR(out->Pixels[i], in->Pixels[i], 1) << angle;
    }
}

TEST(DBlur, WithoutLengthThePictureStays) {
    const Picture in = Noise(40, 27);
    EXPECT_TRUE(Same(*RunBlur(*in, {.length = 0.0, .angle = 77.0}), *in));
    const Picture pixel = Noise(1, 1);
    EXPECT_TRUE(Same(*RunBlur(*pixel, {}), *pixel));
    const Picture tiny = Noise(8, 8); // the sliver is too thin for any weight
    EXPECT_TRUE(Same(*RunBlur(*tiny, {.length = 0.0}), *Flat(8, 8, 0)));
}

TEST(DBlur, LengthEndsAtTheLongerSide) {
    const Picture in = Noise(40, 27);
    EXPECT_TRUE(
        Same(*RunBlur(*in, {.length = 100.0, .angle = 20.0}), *RunBlur(*in, {.length = 1e9, .angle = 20.0})));
}

TEST(DBlur, HostileValuesEndInAFrame) {
    const Picture in = Noise(24, 16);
    for (double value : {1e9, -1e30, 1e300, std::numeric_limits<double>::infinity(), std::nan("")}) {
        for (const Settings& settings :
             {Settings{.length = value, .angle = 30.0}, Settings{.angle = value}, Settings{.aspectX = value},
              Settings{.angle = 45.0, .aspectY = 0.0}}) {
            const Picture out = RunBlur(*in, settings);
            for (int i = 0; i < 24 * 16 * 4; ++i) ASSERT_LE(out->Pixels[i], kFullScale) << value;
        }
    }
    EXPECT_TRUE(Same(*RunBlur(*in, {.length = std::nan("")}), *in));
}

TEST(DBlur, LeavesAlphaAloneWhenAsked) {
    const Picture in = Noise(20, 14);
    CoreRunner<DBlur> runner;
    Give(runner.core, {.length = 30.0});
    runner.core.ProcessAlpha = false;
    const Picture want = Plain(*in, {.length = 30.0}, 0.0f);
    want->CopyAlpha(in.get());
    EXPECT_TRUE(Same(*runner.Run(*in), *want));
}

TEST(DBlur, AbortedFrameIsNotTouched) {
    const Picture in = Noise(20, 14);
    CoreRunner<DBlur> runner;
    Give(runner.core, {.length = 30.0});
    runner.owner.Aborted = true;
    EXPECT_TRUE(Same(*runner.Run(*in), *in));
}

TEST(DBlur, WithoutMemoryForTheKernelTheFrameStaysAndSaysSo) {
    const Picture in = Noise(20, 14);
    const Picture out = K7Image::MakeCopy(*in);
    CoreRunner<DBlur> runner;
    Give(runner.core, {.length = 30.0});
    runner.core.Input.Image = in.get();
    runner.core.Output.Image = out.get();
    const CurrentChunksScope scope(&runner.chunks);
    {
        const FailingMemory memory(0);
        runner.core.Process();
    }
    EXPECT_TRUE(Same(*out, *in));
    EXPECT_EQ(runner.owner.Messages, std::vector<std::string>{"Memory Allocation Error for kern\n"});
}

TEST(DBlur, WidgetStandsInTheMiddleAndTurns) {
    DBlur core;
    RecordingSurface surface(400, 200);
    FakeInput angle("Angle");
    core.Surface = &surface;
    core.ImageWidth = 400;
    core.ImageHeight = 200;
    core.AngleOverlay.Owner = &core;
    core.AngleOverlay.Link.Input[0] = &angle;
    core.AngleOverlay.Link.Control[0] = &core.Angl;
    core.Angl.Value = 90.0;
    core.Draw();
    EXPECT_TRUE(surface.Loops.at(0).IsAt(200.0f, 180.0f, 4.0f)); // a fifth of the width above the middle

    core.Event(kOverlayPress, 200.0f, 180.0f);
    core.Event(kOverlayDrag, 120.0f, 100.0f);
    core.Event(kOverlayRelease, 120.0f, 100.0f);
    EXPECT_DOUBLE_EQ(angle.X, 180.0);
    EXPECT_DOUBLE_EQ(core.Angl.Value, 180.0);
}

} // namespace
} // namespace k7::test
