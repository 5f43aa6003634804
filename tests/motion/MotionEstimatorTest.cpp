#include "motion/MotionEstimator.h"

#include "tests/motion/MotionPictures.h"
#include "tests/motion/PlainMotion.h"
#include "tests/support/CoreRunner.h"

#include <limits>
#include <random>

namespace k7::test {
namespace {

constexpr int kEverywhere[4] = {0, 10000, 0, 10000};

/// Runs the estimator as a core does.
struct Estimate {
    Estimate(const K7Image& previous, const K7Image& current, const int (&region)[4] = kEverywhere,
             float preBlur = 2.5f, float outlierLimit = 655.34f, int threads = 1) {
        const CurrentChunksScope scope(&runner.chunks);
        runner.owner.Threads = threads;
        const MotionSearch search = {preBlur, outlierLimit, region[0], region[1], region[2], region[3]};
        if (estimator.MakeBuffers(current.Width, current.Height))
            field = estimator.EstimateMotion(runner.core, previous, current, search);
    }
    float Dx(int x, int y) const { return field->Dx[y * field->Width + x]; }
    float Dy(int x, int y) const { return field->Dy[y * field->Width + x]; }

    CoreRunner<EmptyCore> runner;
    MotionEstimator estimator;
    const MotionField* field = nullptr;
};

testing::AssertionResult SameField(const Estimate& got, const PlainField& want) {
    for (int y = 0; y < want.dx.height; ++y)
        for (int x = 0; x < want.dx.width; ++x)
            if (got.Dx(x, y) != want.dx.At(x, y) || got.Dy(x, y) != want.dy.At(x, y))
                return testing::AssertionFailure()
                       << "at x " << x << " y " << y << ": got (" << got.Dx(x, y) << ", " << got.Dy(x, y)
                       << "), want (" << want.dx.At(x, y) << ", " << want.dy.At(x, y) << ")";
    return testing::AssertionSuccess();
}

TEST(MatchBlock, EqualsAFullSearch) {
    std::mt19937 random(5);
    const auto draw = [&](int low, int high) { return std::uniform_int_distribution(low, high)(random); };
    for (int round = 0; round < 1500; ++round) {
        // Few grey values make ties, many a single winner; some blocks and guesses lie outside.
        const int width = draw(1, 60);
        const int height = draw(1, 60);
        const int most = round % 3 == 0 ? 0 : round % 3 == 1 ? 2 : 255;
        Plane<int> previous(width, height), current(width, height);
        for (int& value : previous.values) value = draw(0, most);
        for (int& value : current.values) value = draw(0, most);
        std::vector<std::uint8_t> a(previous.values.begin(), previous.values.end());
        std::vector<std::uint8_t> b(current.values.begin(), current.values.end());
        const int bx = draw(-12, width + 12), by = draw(-12, height + 12);
        const int guessX = bx + draw(-30, 30), guessY = by + draw(-30, 30);

        int x = 0, y = 0, wantX = 0, wantY = 0;
        const bool want = PlainMatchBlock(current, previous, bx, by, guessX, guessY, &wantX, &wantY);
        EXPECT_EQ(
            MatchBlock({b.data(), width, height}, {a.data(), width, height}, bx, by, guessX, guessY, &x, &y),
            want);
        EXPECT_EQ(std::pair(x, y), std::pair(wantX, wantY)) << "round " << round;
    }
}

TEST(MotionEstimator, EqualsItsDefinition) {
    const struct {
        int width, height;
        int region[4];
        float preBlur, limit;
    } cases[] = {
        {150, 110, {0, 149, 0, 109}, 2.5f, 655.34f}, {97, 83, {-40, 500, -1, 60}, 1.2f, 20.0f},
        {120, 90, {80, 30, 70, 20}, 0.3f, 2.0f},     {64, 48, {7, 7, -7, 9}, 5.0f, 655.34f},
        {25, 25, {0, 24, 0, 24}, 0.0f, 655.34f},     {41, 140, {-30, -20, 0, 139}, 2.5f, 655.34f},
        {60, 60, {100, 200, 0, 59}, 2.5f, 655.34f},  {140, 44, {0, 139, 12, 12}, 70.0f, 0.5f},
    };
    for (const auto& c : cases) {
        const Picture scene = Blobs(c.width + 40, c.height + 40, 3);
        const Picture previous = Window(*scene, 12, 9, c.width, c.height);
        const Picture current = Mixed(*Window(*scene, 5, 14, c.width, c.height), *previous);
        const PlainField want = PlainEstimate(*previous, *current, c.preBlur, c.limit, c.region);
        for (int threads : {1, 2, 3, 8})
            EXPECT_TRUE(SameField(Estimate(*previous, *current, c.region, c.preBlur, c.limit, threads), want))
                << c.width << " x " << c.height << " threads " << threads;
    }
}

TEST(MotionEstimator, FindsAMovedSquare) {
    // A textured square of 96 pixels on a plain background moves by whole pixels, right and down.
    const int moves[][2] = {{5, -3}, {-17, 11}, {30, 2}};
    for (const auto& move : moves) {
        const Picture previous = TexturedSquare(256, 224, 80, 64, 96);
        const Picture current = TexturedSquare(256, 224, 80 + move[0], 64 + move[1], 96);
        const Estimate found(*previous, *current);
        for (int y = 96; y < 128; ++y)
            for (int x = 112; x < 144; ++x) {
                const bool still =
                    found.Dx(x, y) == 0.0f && found.Dy(x, y) == 0.0f; // by chance the same grey
                if (still) continue;
                EXPECT_EQ(found.Dx(x, y), static_cast<float>(move[0])) << x << " " << y;
                EXPECT_EQ(found.Dy(x, y), static_cast<float>(move[1])) << x << " " << y;
            }
        EXPECT_NE(found.Dx(120, 110), 0.0f);
    }
}

TEST(MotionEstimator, SmallFramesAndRegionsOutsideHaveNoMotion) {
    const int lowest = std::numeric_limits<int>::min();
    const int highest = std::numeric_limits<int>::max();
    const struct {
        int width, height;
        int edge = 0, otherEdge = 10000;
    } cases[] = {{1, 1},
                 {1, 40},
                 {40, 1},
                 {7, 9},
                 {24, 80},
                 {80, 24},
                 {24, 24},
                 {50, 40, lowest, lowest},
                 {50, 40, highest, highest}};
    for (const auto& [width, height, a, b] : cases)
        EXPECT_TRUE(SameField(Estimate(*Noise(width, height, 1), *Noise(width, height, 2), {a, b, a, b}),
                              PlainField(width, height)));
    EXPECT_FALSE(SameField(Estimate(*Noise(50, 40, 1), *Noise(50, 40, 2), {highest, lowest, lowest, highest}),
                           PlainField(50, 40)));
}

TEST(MotionEstimator, TakesAnyBlurAndLimit) {
    for (float value : {NAN, INFINITY, -INFINITY, 3e38f}) {
        const Estimate found(*Noise(50, 40, 1), *Noise(50, 40, 2), kEverywhere, value, value, 2);
        ASSERT_NE(found.field, nullptr);
        for (int i = 0; i < 50 * 40; ++i) ASSERT_TRUE(std::isfinite(found.field->Dx[i] + found.field->Dy[i]));
    }
}

TEST(MotionEstimator, FlatFramesReportAndDoNotMove) {
    const Picture flat = Flat(40, 40, 9000);
    const Estimate found(*flat, *flat);
    EXPECT_EQ(found.runner.owner.Messages,
              std::vector<std::string>(2, "URGH! Input image has zero range!\n"));
    EXPECT_TRUE(SameField(found, PlainField(40, 40)));
}

TEST(BlurKernel, HoldsASampledGaussian) {
    EXPECT_EQ(MakeBlurKernel(2.5f).size(), 7u);
    EXPECT_EQ(MakeBlurKernel(0.1f).size(), 1u);
    EXPECT_EQ(MakeBlurKernel(0.1f)[0], 1.0f);
    const Buffer<float> kernel = MakeBlurKernel(2.5f);
    float sum = 0.0f;
    for (float weight : kernel) sum += weight;
    EXPECT_NEAR(sum, 1.0f, 1e-6f);
    EXPECT_NEAR(kernel[4] / kernel[3], std::exp(-0.72), 1e-6); // sigma 2.5 / 3: exp(-1 / (2 x 0.6944))
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(kernel[i], kernel[6 - i]);
}

} // namespace
} // namespace k7::test
