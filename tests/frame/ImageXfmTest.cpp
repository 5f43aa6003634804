#include "frame/ImageXfmK7.h"

#include "tests/support/CoreRunner.h"
#include "tests/support/FailingMemory.h"

#include <cmath>
#include <numbers>
#include <vector>

namespace k7::test {
namespace {

/// Kernels by definition, at any x.
double PlainKernel(int filter, double x) {
    x = std::fabs(x);
    const auto sinc = [](double t) {
        return t == 0.0 ? 1.0 : std::sin(std::numbers::pi * t) / (std::numbers::pi * t);
    };
    const double a = filter == 3 ? -0.5 : -1.0;
    switch (filter) {
    case 3:
    case 4:
        if (x < 1) return (a + 2) * x * x * x - (a + 3) * x * x + 1;
        return x < 2 ? a * x * x * x - 5 * a * x * x + 8 * a * x - 4 * a : 0;
    case 5:
        if (x < 1) return (3 * x * x * x - 6 * x * x + 4) / 6;
        return x < 2 ? (6 * x * x - x * x * x - 12 * x + 8) / 6 : 0;
    case 6:
        return x < 2 ? sinc(x) * sinc(x / 2) : 0;
    default:
        return x < 1 ? 1 - x : 0;
    }
}

/// One line resampled by definition: no tables of taps, no skipped weights.
std::vector<u16> PlainLine(const std::vector<u16>& in, int size, int filter) {
    const int sourceSize = static_cast<int>(in.size());
    if (size == sourceSize) return in;
    if (size == 1) return {in[0]};
    const int support = filter >= 3 && filter <= 6 ? 2 : 1;
    const double step = (sourceSize - 1.0) / (size - 1.0);
    const double stretch = size < sourceSize ? step : 1.0;
    std::vector<u16> out;
    for (int d = 0; d < size; ++d) {
        const double c = d * step;
        double sum = 0, total = 0;
        for (double i = std::ceil(c - support * stretch); i <= std::floor(c + support * stretch); ++i) {
            const double entry = std::trunc((i - c) / stretch * 512);
            const double weight = PlainKernel(filter, entry / 512);
            total += weight;
            sum += in[static_cast<std::size_t>(std::clamp(i, 0.0, sourceSize - 1.0))] * weight;
        }
        if (size < sourceSize) sum /= total;
        out.push_back(static_cast<u16>(std::clamp(sum, 0.0, 32767.0) + 0.5));
    }
    return out;
}

/// Rows resampled and rounded to words, and the picture transposed.
Picture PlainPass(const K7Image& in, int size, int filter) {
    Picture out = K7Image::Make(in.Height, size);
    for (int c = 0; c < 4; ++c)
        for (int y = 0; y < in.Height; ++y) {
            std::vector<u16> line;
            for (int x = 0; x < in.Width; ++x) line.push_back(in.Rows[y][4 * x + c]);
            line = PlainLine(line, size, filter);
            for (int x = 0; x < size; ++x) out->Rows[x][4 * y + c] = line[static_cast<std::size_t>(x)];
        }
    return out;
}

Picture Resize(const K7Image& in, int width, int height, int filter = 3) {
    Picture out = Flat(width, height, 99);
    ImageXfmK7 xfm;
    xfm.SetFilter(filter);
    EXPECT_EQ(xfm.Transfer(&in, out.get()), 1);
    return out;
}

/// A core that only resizes its input, on its owner's threads.
struct ResizeCore : PluginK7 {
    ImageInputK7 Input;
    ImageOutputK7 Output;
    K7Image* Target = nullptr;
    void Process() override {
        ImageXfmK7 xfm;
        xfm.SetFilter(3);
        xfm.SetDispatch(this, ImageXfmK7::RunExternalChunks);
        EXPECT_EQ(xfm.Transfer(Input.Image, Target), 1);
    }
};

TEST(ImageXfm, EveryKernelFollowsItsDefinitionOnEverySize) {
    const int sizes[][4] = {{7, 5, 16, 11}, {16, 11, 7, 5}, {5, 9, 11, 3},  {40, 3, 4, 31},  {9, 9, 9, 4},
                            {9, 9, 20, 9},  {1, 1, 6, 4},   {31, 7, 31, 7}, {6, 4, 1, 1},    {1, 30, 8, 2},
                            {2, 2, 3, 1},   {200, 1, 2, 1}, {1, 2, 1, 150}, {150, 2, 148, 3}};
    for (int filter : {1, 3, 4, 5, 6, 0})
        for (const auto& size : sizes) {
            const Picture in = Noise(size[0], size[1]);
            const Picture want = PlainPass(*PlainPass(*in, size[2], filter), size[3], filter);
            EXPECT_TRUE(Same(*Resize(*in, size[2], size[3], filter), *want))
                << size[0] << " x " << size[1] << " to " << size[2] << " x " << size[3] << " filter "
                << filter;
        }
}

TEST(ImageXfm, ReducingKeepsAFlatPictureFlat) {
    const Picture in = Flat(97, 61, 12345, 0, 32767, 1);
    for (int filter : {1, 3, 4, 5, 6})
        EXPECT_TRUE(Same(*Resize(*in, 30, 23, filter), *Flat(30, 23, 12345, 0, 32767, 1))) << filter;
}

TEST(ImageXfm, ThreadsDoNotChangeThePicture) {
    const Picture in = Noise(300, 23);
    const int sizes[][2] = {{300, 23}, {410, 23}, {300, 7}, {111, 50}};
    for (const auto& size : sizes)
        for (int threads : {1, 3, 40}) {
            const Picture out = Flat(size[0], size[1], 99);
            CoreRunner<ResizeCore> runner;
            runner.core.Target = out.get();
            runner.owner.OnThreads = threads == 3;
            runner.Run(*in, threads);
            EXPECT_TRUE(Same(*out, *Resize(*in, size[0], size[1]))) << size[0] << " " << threads;
        }
}

TEST(ImageXfm, ReportsAFailedAllocation) {
    const Picture in = Noise(8, 8);
    const Picture out = Flat(4, 4, 0);
    ImageXfmK7 xfm;
    for (int blocks = 0;; ++blocks) {
        const FailingMemory memory(blocks);
        const int result = xfm.Transfer(in.get(), out.get());
        ASSERT_EQ(result, memory.Sufficed()) << blocks;
        if (result) break;
    }
    EXPECT_TRUE(Same(*out, *Resize(*in, 4, 4, ImageXfmK7::kTriangle)));
}

TEST(ImageXfm, WithoutACoreTheHookIsNotCalled) {
    const Picture in = Noise(8, 8);
    const Picture out = Flat(4, 4, 0);
    ImageXfmK7 xfm;
    xfm.SetFilter(3);
    xfm.SetDispatch(nullptr, [](PluginK7*, ExternalWorker, int, ImageXfmK7*) { FAIL(); });
    EXPECT_EQ(xfm.Transfer(in.get(), out.get()), 1);
    EXPECT_TRUE(Same(*out, *Resize(*in, 4, 4)));
}

} // namespace
} // namespace k7::test
