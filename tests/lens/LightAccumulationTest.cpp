#include "lens/LightAccumulation.h"

#include "tests/lens/PlainLight.h"
#include "tests/support/Pictures.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace k7::test {
namespace {

/// Everything that a frame of lights is made from.
template <class Real>
struct Scene {
    Scene(int width, int height, float aspect = 1.0f)
        : map(Flat(width, height, 0))
        , setup{3, 20, 30, aspect, width, height} {
        random.Seed(-1);
        for (auto& pair : pairs) pair = {static_cast<Real>(random() * 3.1415926), random()};
    }

    void Light(int x, int y, int r = 32767, int g = 20000, int b = 1000) {
        const int words[] = {r, g, b};
        std::copy_n(words, 3, map->Rows[y] + 4 * x);
    }

    void MakeTables(Real aperture = 1, Real glow = 6) {
        const int angles = Trunc(setup.Length * 2);
        ASSERT_TRUE(tables.MakeHalo(clr, {aperture, 5, 20, static_cast<Real>(0.5), setup.Aspect}, random));
        ASSERT_TRUE(tables.MakeStreaks(clr, {angles, StreakEntries(setup), 10, static_cast<Real>(0.05)}));
        ASSERT_TRUE(tables.MakeGlow({glow, 40, setup.Aspect}, random));
    }

    /// Accumulates in chunks of rows and returns the sums over the whole frame, three per pixel.
    std::vector<Real> Accumulate(int chunks = 1, bool whole = false) {
        LightList lights;
        EXPECT_TRUE(lights.Collect(*map, {0, 0, map->Width, map->Height}, kFlareSource<Real>));
        EXPECT_TRUE(accumulation.Prepare(lights, tables, setup, pairs, whole, white));
        const PixelBox& box = accumulation.Box();
        for (int i = chunks - 1; i >= 0; --i)
            accumulation.AccumulateLights(box.Height() * i / chunks, box.Height() * (i + 1) / chunks - 1);
        std::vector<Real> sums(static_cast<std::size_t>(map->Width * map->Height * 3), 0);
        for (int y = box.Bottom; y < box.Top; ++y)
            for (int x = box.Left; x < box.Right; ++x) {
                const LightSum<Real>& cell = accumulation.Planes().At(x, y);
                const Real channels[] = {cell.R, cell.G, cell.B};
                std::copy_n(channels, 3, &sums[static_cast<std::size_t>(3 * (y * map->Width + x))]);
            }
        return sums;
    }

    /// Accumulates in this many chunks and compares with the plain sum.
    testing::AssertionResult IsPlain(int chunks) {
        const std::vector<Real> got = Accumulate(chunks);
        const std::vector<Real> want = PlainLight<Real>(*map, tables, setup, pairs).Sums;
        const auto width = static_cast<std::size_t>(map->Width);
        for (std::size_t i = 0; i < want.size(); ++i)
            if (std::min(got[i], white) != std::min(want[i], white))
                return testing::AssertionFailure()
                       << "at x " << i / 3 % width << " y " << i / 3 / width << " channel " << i % 3
                       << ": got " << got[i] << ", want " << want[i] << ", " << chunks << " chunks";
        return testing::AssertionSuccess();
    }

    Picture map;
    StreakSetup<Real> setup;
    StreakPairs<Real> pairs;
    Real white = std::numeric_limits<Real>::infinity();
    Ran1 random;
    CLRK7 clr;
    FlareTables<Real> tables;
    LightAccumulation<Real> accumulation;
};

template <class Real>
class LightAccumulationOf : public testing::Test {};
using Widths = testing::Types<double, float>;
TYPED_TEST_SUITE(LightAccumulationOf, Widths);

TYPED_TEST(LightAccumulationOf, IsTheSumOfItsDefinitionToTheLastBit) {
    for (float aspect : {1.0f, 0.5f, 1.1f, 2.0f})
        for (const auto& [width, height] : {std::pair{60, 47}, {1, 40}, {40, 1}, {1, 1}, {200, 9}}) {
            Scene<TypeParam> scene(width, height, aspect);
            for (int i = 0; i < 25; ++i)
                scene.Light(i * 7 % width, i * 13 % height, 1000 * i + 1, 500 * i, 32767);
            scene.Light(0, 0);
            scene.Light(width - 1, height - 1);
            scene.MakeTables();
            for (int chunks : {1, 2, 5, 50})
                EXPECT_TRUE(scene.IsPlain(chunks)) << width << " x " << height << " aspect " << aspect;
        }
}

TYPED_TEST(LightAccumulationOf, DrawsStreaksOfEveryNumberAndLength) {
    for (int count : {0, 1, 40, 1000})
        for (int length : {-5, 0, 1, 2, 37, 400}) {
            Scene<TypeParam> scene(70, 50);
            scene.Light(3, 2);
            scene.Light(35, 25);
            scene.Light(69, 40);
            scene.setup.Count = count;
            scene.setup.Length = static_cast<TypeParam>(length + 0.4);
            scene.MakeTables();
            EXPECT_TRUE(scene.IsPlain(3)) << count << " of " << length;
        }
}

TYPED_TEST(LightAccumulationOf, NumberAndLengthOfStreaksAreLimited) {
    Scene<TypeParam> scene(40, 30);
    scene.Light(20, 15);
    scene.setup.Count = kMostStreaks;
    scene.MakeTables();
    const auto most = scene.Accumulate();
    scene.setup.Count = 2147483647;
    EXPECT_EQ(scene.Accumulate(), most);

    scene.setup.Count = 5;
    scene.setup.Length = static_cast<TypeParam>(1e9);
    scene.MakeTables();
    for (TypeParam sum : scene.Accumulate()) EXPECT_TRUE(std::isfinite(sum));
}

TYPED_TEST(LightAccumulationOf, RotationThatIsNotFiniteLaysStreaksAlongTheRows) {
    for (double rotation : {std::nan(""), std::numeric_limits<double>::infinity()}) {
        Scene<TypeParam> scene(90, 9);
        scene.Light(45, 4);
        scene.setup.Rotation = static_cast<TypeParam>(rotation);
        scene.MakeTables(100, static_cast<TypeParam>(0.01));
        const auto sums = scene.Accumulate();
        for (int x = 0; x < 90; ++x)
            for (int y : {2, 6}) EXPECT_EQ(sums[static_cast<std::size_t>(3 * (y * 90 + x))], 0);
        EXPECT_GT(sums[static_cast<std::size_t>(3 * (4 * 90 + 60))], 0);
    }
}

TYPED_TEST(LightAccumulationOf, BandsOfRowsChangeNothing) {
    Scene<TypeParam> scene(5000, 60); // a few dozen rows of it fill a band
    for (int i = 0; i < 12; ++i) scene.Light(400 * i, 5 * i);
    scene.setup.Length = 90;
    scene.MakeTables();
    EXPECT_TRUE(scene.IsPlain(1));
}

TYPED_TEST(LightAccumulationOf, WorkOnWhiteRowsMayEndEarly) {
    Scene<TypeParam> scene(40, 30);
    for (int y = 0; y < 30; ++y)
        for (int x = 0; x < 40; ++x) scene.Light(x, y, 3000, 2000, y < 20 ? 4000 : 1);
    scene.MakeTables();
    scene.white = 160000;
    EXPECT_TRUE(scene.IsPlain(1));
    EXPECT_TRUE(scene.IsPlain(4));
    const auto sums = scene.Accumulate();
    const auto whole = PlainLight<TypeParam>(*scene.map, scene.tables, scene.setup, scene.pairs).Sums;
    EXPECT_LT(sums[0], whole[0]) << "a white row was worked on to the end";
}

TYPED_TEST(LightAccumulationOf, PlanesCoverWhatLightReaches) {
    Scene<TypeParam> scene(300, 200);
    scene.MakeTables();
    scene.Accumulate();
    EXPECT_EQ(scene.accumulation.Box().Height(), 0);
    scene.Accumulate(2, true);
    EXPECT_EQ(scene.accumulation.Box().Width(), 300);
    EXPECT_EQ(scene.accumulation.Box().Height(), 200);
    scene.Light(20, 100);
    EXPECT_TRUE(scene.IsPlain(1));
    EXPECT_EQ(scene.accumulation.Box().Left, 0);
    EXPECT_LT(scene.accumulation.Box().Right, 100);
}

} // namespace
} // namespace k7::test
