#include "motion/BlurRendering.h"

#include "tests/motion/MotionPictures.h"
#include "tests/motion/PlainMotion.h"
#include "tests/support/CoreRunner.h"

#include <random>

namespace k7::test {
namespace {

Picture Render(const K7Image& previous, const K7Image& current, const PlainField& field,
               const BlurPaths& paths, int threads = 1, int parts = 0) {
    CoreRunner<EmptyCore> runner;
    const CurrentChunksScope scope(&runner.chunks);
    runner.owner.Threads = threads;
    runner.owner.Parts = parts;
    BlurRenderer renderer;
    Picture output = K7Image::Make(previous.Width, previous.Height);
    EXPECT_TRUE(renderer.MakeBuffers(previous.Width, previous.Height, 0));
    const MotionField view = {previous.Width, previous.Height, field.dx.values.data(),
                              field.dy.values.data()};
    renderer.RenderBlur(runner.core, *output, previous, current, view, paths);
    return output;
}

Picture RenderPlain(const K7Image& previous, const K7Image& current, const PlainField& field,
                    const BlurPaths& paths, int chunks = 1) {
    Picture output = K7Image::Make(previous.Width, previous.Height);
    BlurPaths held = paths;
    held.StepLimit = std::max(paths.StepLimit, 2);
    held.StartWeight = std::max(paths.StartWeight, 1.0f);
    held.EndWeight = std::max(paths.EndWeight, 1.0f);
    PlainRender(*output, previous, current, field, held, chunks);
    return output;
}

/// Areas at rest, areas in uniform motion, and vectors of any length and direction.
PlainField MixedField(int width, int height, unsigned seed) {
    std::mt19937 random(seed);
    const auto draw = [&] { return std::uniform_real_distribution<float>(-1.0f, 1.0f)(random); };
    PlainField field(width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int area = (x / 9 + y / 7) % 4;
            const float length = area == 0 ? 0.0f : area == 1 ? 2.0f : area == 2 ? 15.0f : 90.0f;
            field.dx.At(x, y) = area == 1 ? length : length * draw();
            field.dy.At(x, y) = length * draw();
        }
    return field;
}

TEST(BlurRendering, DependsOnTheDivisionButNotOnTheThreads) {
    const Picture previous = Noise(61, 47);
    const Picture current = Noise(61, 47, 2);
    const PlainField field = MixedField(61, 47, 5);
    const BlurPaths paths = {21, 2.5f, 9.0f, 1.0f};
    for (int parts : {1, 3, 60}) {
        const Picture want = Render(*previous, *current, field, paths, parts);
        for (int threads : {1, 2, 7, 47})
            EXPECT_TRUE(Same(*Render(*previous, *current, field, paths, threads, parts), *want))
                << parts << " parts on " << threads;
    }
}

TEST(BlurRendering, EqualsItsDefinition) {
    const int sizes[][2] = {{64, 48}, {61, 47}, {33, 70}, {5, 3}, {3, 9}};
    const BlurPaths settings[] = {{6, 1.0f, 1.0f, 1.0f},
                                  {21, 2.5f, 9.0f, 1.0f},
                                  {2, 0.1f, 1.0f, 50.0f},
                                  {201, -1.5f, 0.2f, -3.0f},
                                  {-5, 0.0f, 1.0f, 1.0f}};
    for (const auto& size : sizes)
        for (const BlurPaths& paths : settings) {
            const Picture previous = Noise(size[0], size[1], 3);
            const Picture current = Noise(size[0], size[1], 4);
            const PlainField field = MixedField(size[0], size[1], 7);
            for (int threads : {1, 2, 3, 8})
                EXPECT_TRUE(Same(*Render(*previous, *current, field, paths, threads),
                                 *RenderPlain(*previous, *current, field, paths, threads)))
                    << size[0] << " x " << size[1] << " scale " << paths.Scale << " threads " << threads;
        }
    // NaN counts as the least value; sums stay within the range of a float.
    const Picture previous = Noise(40, 30, 1);
    const PlainField field = MixedField(40, 30, 2);
    EXPECT_TRUE(Same(*Render(*previous, *previous, field, {6, NAN, NAN, NAN}),
                     *RenderPlain(*previous, *previous, field, {6, 0.0f, 1.0f, 1.0f})));
    EXPECT_TRUE(Same(*Render(*previous, *previous, field, {6, INFINITY, 3e38f, INFINITY}),
                     *RenderPlain(*previous, *previous, field, {6, 1e9f, 1e25f, 1e25f})));
}

TEST(BlurRendering, ClosesHolesFromCoarserLevels) {
    // Everything moves to the right: the left border is left empty and is filled from what lies beside it.
    const Picture previous = Flat(70, 50, 8000);
    for (const auto& [dx, dy] : {std::pair(40.0f, 0.0f), std::pair(0.0f, -30.0f), std::pair(25.0f, 25.0f)}) {
        PlainField field(70, 50);
        field.dx.values.assign(70 * 50, dx);
        field.dy.values.assign(70 * 50, dy);
        const BlurPaths paths = {2, 1.0f, 1.0f, 1.0f};
        const Picture got = Render(*previous, *previous, field, paths);
        EXPECT_TRUE(Same(*got, *RenderPlain(*previous, *previous, field, paths)));
        for (int i = 0; i < 70 * 50 * 4; ++i) ASSERT_NEAR(got->Pixels[i], 8000, 1) << i;
    }
}

TEST(BlurRendering, WithoutMotionIsTheEarlierFrame) {
    const int sizes[][2] = {{1, 1}, {1, 8}, {8, 1}, {2, 2}, {31, 22}};
    for (const auto& size : sizes) {
        const Picture previous = Noise(size[0], size[1], 1);
        const Picture current = Noise(size[0], size[1], 2);
        const PlainField still(size[0], size[1]);
        for (int threads : {1, 4})
            EXPECT_TRUE(
                Same(*Render(*previous, *current, still, {6, 1.0f, 50.0f, 1.0f}, threads), *previous));
    }
}

TEST(BlurRendering, LaysAPointAlongItsPath) {
    // One bright pixel in a black frame moves 8 pixels to the right: (8 + 1) x 1.5 is 13 samples, 6 allowed.
    Picture previous = Flat(64, 32, 0, 0, 0, 32767);
    Picture current = Flat(64, 32, 0, 0, 0, 32767);
    previous->Rows[16][4 * 20] = current->Rows[16][4 * 28] = 30000;
    PlainField field(64, 32);
    field.dx.At(20, 16) = 8.0f;
    const Picture out = Render(*previous, *current, field, {6, 1.0f, 1.0f, 1.0f});
    // One sample on 20 only, the others over still black pixels: at 21.6, 23.2, 24.8, 26.4 and 28.
    EXPECT_EQ(out->Rows[16][4 * 20], 30000);
    EXPECT_EQ(out->Rows[16][4 * 21], static_cast<int>(30000 * 0.4 / 1.4 + 0.5));
    EXPECT_EQ(out->Rows[16][4 * 22], static_cast<int>(30000 * 0.6 / 1.6 + 0.5));
    EXPECT_EQ(out->Rows[16][4 * 28], 15000);
    EXPECT_EQ(out->Rows[16][4 * 19], 0);
    EXPECT_EQ(out->Rows[16][4 * 29], 0);
    EXPECT_EQ(out->Rows[15][4 * 21], 0);
}

} // namespace
} // namespace k7::test
