#include "filters/Clean.h"

#include "tests/support/CoreRunner.h"
#include "tests/support/VectorLevels.h"

#include <algorithm>
#include <vector>

namespace k7::test {
namespace {

/// The median as its definition reads: sort the window, take the value of rank count / 2.
template <class Sample>
std::unique_ptr<PictureK7<Sample>> PlainMedian(const PictureK7<Sample>& in, int winX, int winY) {
    auto out = PictureK7<Sample>::MakeCopy(in);
    for (int i = 0; i < in.Width * in.Height * 4; ++i) {
        const int x = i / 4 % in.Width, y = i / 4 / in.Width;
        std::vector<Sample> values;
        for (int v = y - winY / 2; v < y - winY / 2 + winY; ++v)
            for (int u = x - winX / 2; u < x - winX / 2 + winX; ++u)
                if (u >= 0 && u < in.Width && v >= 0 && v < in.Height)
                    values.push_back(in.Rows[v][4 * u + i % 4]);
        std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2), values.end());
        out->Pixels[i] = values[values.size() / 2];
    }
    return out;
}

/// Runs Clean with a window given in the picture's own pixels.
template <class Sample>
std::unique_ptr<PictureK7<Sample>> RunClean(PictureK7<Sample>& in, int winX, int winY) {
    in.WidthScale = 1.0f;
    CoreRunner<Clean> runner;
    runner.core.XRad.Value = winX;
    runner.core.YRad.Value = winY;
    return runner.Run(in, 3);
}

TEST(Clean, IsTheMedianOfEveryWindowOnEverySize) {
    const int sizes[][2] = {{1, 1}, {1, 9}, {9, 1}, {2, 3}, {17, 13}, {33, 8}, {70, 19}};
    const int windows[][2] = {
        {2, 2},   {3, 3},   {4, 4},   {5, 5},   {1, 9},   {9, 1},  {4, 5},
        {15, 15}, {16, 15}, {225, 1}, {1, 226}, {40, 40}, {2, 31}, {60, 2}}; // for each method in both depths
    for (const auto& size : sizes)
        for (const auto& window : windows) {
            const Picture in = Noise(size[0], size[1]);
            EXPECT_TRUE(Same(*RunClean(*in, window[0], window[1]), *PlainMedian(*in, window[0], window[1])))
                << size[0] << " x " << size[1] << " window " << window[0] << " x " << window[1];
            const FloatPicture floats = Floats(*in, -1.5f);
            for (int i = 0; i < size[0] * size[1] * 4; i += 3) floats->Pixels[i] *= -1e-3f;
            EXPECT_TRUE(
                Same(*RunClean(*floats, window[0], window[1]), *PlainMedian(*floats, window[0], window[1])))
                << "floats, " << size[0] << " x " << size[1] << " window " << window[0] << " x " << window[1];
        }
}

TEST(Clean, IsTheSameWithVectorsOfEveryWidth) {
    const Picture in = Noise(90, 70);
    const FloatPicture floats = Floats(*in, -1.5f);
    const Picture words = PlainMedian(*in, 21, 12);
    const FloatPicture medians = PlainMedian(*floats, 21, 12);
    OnEachLevel([&] {
        EXPECT_TRUE(Same(*RunClean(*in, 21, 12), *words));
        EXPECT_TRUE(Same(*RunClean(*floats, 21, 12), *medians));
    });
}

TEST(Clean, HandlesFewAndExtremeValues) {
    for (int levels : {1, 2, 3}) {
        Picture in = Noise(24, 20, 7);
        for (int i = 0; i < 24 * 20 * 4; ++i)
            in->Pixels[i] = static_cast<u16>(in->Pixels[i] % levels * (65535 / std::max(1, levels - 1)));
        EXPECT_TRUE(Same(*RunClean(*in, 5, 3), *PlainMedian(*in, 5, 3))) << levels;
    }
}

TEST(Clean, WindowFollowsTheWidthOfTheFrame) {
    Picture wide = Noise(1920, 3); // 1 / (720 / 1920) = 2.67: a window of 2 x 2
    CoreRunner<Clean> runner;
    runner.core.XRad.Value = runner.core.YRad.Value = 1;
    EXPECT_TRUE(Same(*runner.Run(*wide), *PlainMedian(*wide, 2, 2)));
    Picture standard = Noise(720, 3);
    EXPECT_TRUE(Same(*runner.Run(*standard), *standard));
}

TEST(Clean, SizesBelowOneCountAsOne) {
    const Picture in = Noise(12, 12);
    EXPECT_TRUE(Same(*RunClean(*in, 0, 0), *in));
    EXPECT_TRUE(Same(*RunClean(*in, -5, 3), *PlainMedian(*in, 1, 3)));
    EXPECT_TRUE(Same(*RunClean(*in, 3, 0), *PlainMedian(*in, 3, 1)));
    EXPECT_TRUE(Same(*RunClean(*in, 2147483647, 2147483647), *PlainMedian(*in, 99, 99)));
}

} // namespace
} // namespace k7::test
