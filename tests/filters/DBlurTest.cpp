#include "filters/DBlur.h"

#include "filters/BlurKernel.h"
#include "tests/support/CoreRunner.h"
#include "tests/support/FailingMemory.h"
#include "tests/support/FakeInput.h"
#include "tests/support/RecordingSurface.h"

#include <algorithm>
#include <cmath>
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

TEST(BlurKernel, HasTheWorkedWeights) {
    constexpr float third = 1.0f / 3.0f;
    constexpr float sixth = 1.0f / 6.0f;
    const struct {
        float fraction, degrees;
        int capacity;
        bool centred;
        std::vector<BlurKernel> want;
    } streaks[] = {
        {0.03f, 0.0f, 100, true, {{-1, 0, third}, {0, 0, third}, {1, 0, third}}},
        {0.03f, 90.0f, 100, true, {{0, -1, third}, {0, 0, third}, {0, 1, third}}},
        {0.03f, 0.0f, 100, false, {{0, 0, sixth}, {1, 0, third}, {2, 0, third}, {3, 0, sixth}}},
        {0.0f, 33.0f, 719, true, {{0, 0, 1.0f}}}, // without length the pixel itself
        {0.0f, 33.0f, 9, true, {}},               // unless the sliver covers less than a thousandth
    };
    for (const auto& streak : streaks) {
        const auto kernel = Kernel(streak.fraction, streak.degrees, streak.capacity, streak.centred);
        ASSERT_EQ(kernel.size(), streak.want.size());
        for (std::size_t i = 0; i < kernel.size(); ++i) {
            EXPECT_EQ(kernel[i].Dx, streak.want[i].Dx) << i;
            EXPECT_EQ(kernel[i].Dy, streak.want[i].Dy) << i;
            EXPECT_FLOAT_EQ(kernel[i].Weight, streak.want[i].Weight) << i;
        }
    }
}

TEST(BlurKernel, LeavingOutCellsChangesNoBit) {
    for (int capacity : {2, 5, 40, 130})
        for (float degrees :
             {0.0f, 0.01f, 17.0f, 45.0f, 89.99f, 90.0f, 135.0f, 180.0f, 211.0f, 270.0f, 359.0f, -287.0f})
            for (float fraction : {-0.4f, 0.0001f, 0.02f, 0.37f, 1.0f, 40.0f})
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

TEST(BlurKernel, ADiagonalStreakTakesAQuarterOfTheCellsBesideIt) {
    const auto diagonal = Kernel(0.1f, 45.0f, 1000, true);
    const auto middle = std::find_if(diagonal.begin(), diagonal.end(),
                                     [](const BlurKernel& entry) { return entry.Dx == 0 && entry.Dy == 0; });
    ASSERT_NE(middle, diagonal.end());
    // A cell on the diagonal loses two corners of half a diagonal less half the width: 2 x 0.2071 squared.
    EXPECT_EQ(middle[1].Dx, 1);
    EXPECT_NEAR(middle[1].Weight / middle[0].Weight, 0.25 / (std::sqrt(2.0) - 0.5), 1e-4);
    EXPECT_NEAR(middle[-1].Weight / middle[0].Weight, 0.25 / (std::sqrt(2.0) - 0.5), 1e-4);
}

TEST(BlurKernel, AFullArrayCutsTheFarEnd) {
    EXPECT_EQ(Kernel(0.6f, 45.0f, 1000, true).size(), 999u);
    EXPECT_EQ(Kernel(1.0f, 0.0f, 1000, true).size(), 999u); // of 1001 cells
}

// The tool.

struct Settings {
    double length = 10.0;
    double angle = 0.0;
    int centred = 1;
    double aspectX = 1.0;
};

Picture RunBlur(K7Image& in, const Settings& settings) {
    in.AspectX = settings.aspectX;
    CoreRunner<DBlur> runner;
    runner.core.Leng.Value = settings.length;
    runner.core.Angl.Value = settings.angle;
    runner.core.Cent.Value = settings.centred;
    return runner.Run(in, 3);
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

TEST(DBlur, IsTheWeightedSumOnEverySizeInEveryQuadrant) {
    const int sizes[][2] = {{1, 9}, {9, 1}, {2, 1}, {7, 5}, {8, 8}, {33, 20}, {20, 41}};
    for (const auto& size : sizes)
        for (double angle : {0.0, 30.0, 100.0, 200.0, 290.0, 340.0}) {
            // The way through tangent and arc tangent, as the angle goes from screen to pixels.
            const double turned = std::atan(std::tan(angle * kRadians)) * 57.29577950560105;
            const float quadrant = angle < 90.0 ? 0.0f : angle < 270.0 ? 180.0f : 360.0f;
            const float pixelAngle = static_cast<float>(turned) + quadrant;
            EXPECT_NEAR(pixelAngle, angle, 1e-3);
            for (double length : {3.0, 40.0, 100.0, 500.0, -60.0})
                for (int centred : {0, 1}) {
                    const Picture in = Noise(size[0], size[1]);
                    const Settings settings{.length = length, .angle = angle, .centred = centred};
                    EXPECT_TRUE(Same(*RunBlur(*in, settings), *Plain(*in, settings, pixelAngle)))
                        << size[0] << " x " << size[1] << " length " << length << " angle " << angle;
                }
        }
}

TEST(DBlur, LightIsDrawnAgainstTheAngleAndTurnedByWidePixelsWithItsLengthKept) {
    // A pixel gathers along the angle as it goes out from it, so light moves the other way, by half the
    // length. The mean of the places at which a single bright pixel is seen tells where.
    const Picture in = MakePicture(61, 61, [](int x, int y, int) { return x == 30 && y == 30 ? 32767 : 0; });
    for (double aspect : {1.0, 2.0})
        for (double angle : {0.0, 45.0, 90.0, 150.0, 180.0, 225.0, 270.0, 300.0}) {
            const Picture out =
                RunBlur(*in, {.length = 30.0, .angle = angle, .centred = 0, .aspectX = aspect});
            double x = 0.0, y = 0.0, sum = 0.0;
            for (int i = 0; i < 61 * 61; ++i) {
                const double word = out->Pixels[4 * i];
                sum += word;
                x += word * (i % 61 - 30);
                y += word * (i / 61 - 30);
            }
            const double alongX = std::cos(angle * kRadians);
            const double alongY = std::sin(angle * kRadians) * aspect;
            EXPECT_NEAR(x / sum, -9.15 * alongX / std::hypot(alongX, alongY), 0.1) << angle;
            EXPECT_NEAR(y / sum, -9.15 * alongY / std::hypot(alongX, alongY), 0.1) << angle;
        }
}

TEST(DBlur, WithoutLengthThePictureStays) {
    const Picture in = Noise(40, 27);
    for (double length : {0.0, std::nan("")})
        EXPECT_TRUE(Same(*RunBlur(*in, {.length = length, .angle = 77.0}), *in)) << length;
    const Picture pixel = Noise(1, 1);
    EXPECT_TRUE(Same(*RunBlur(*pixel, {}), *pixel));
    const Picture tiny = Noise(8, 8); // the sliver is too thin for any weight
    EXPECT_TRUE(Same(*RunBlur(*tiny, {.length = 0.0}), *Flat(8, 8, 0)));
}

TEST(DBlur, WithoutMemoryForTheKernelTheFrameStaysAndSaysSo) {
    const Picture in = Noise(20, 14);
    const Picture out = K7Image::MakeCopy(*in);
    CoreRunner<DBlur> runner;
    runner.core.Leng.Value = 30.0;
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
    core.Angl.Shown = 90.0;
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
