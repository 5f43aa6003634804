#include "lens/LensStore.h"

#include "frame/Random.h"

#include <gtest/gtest.h>

#include <cmath>

namespace k7 {
namespace {

TEST(LensStore, BuiltInLensesReachFromOneToMinusOne) {
    const int counts[] = {12, 10, 12, 8};
    for (int number = 1; number <= kBuiltInLenses; ++number) {
        const LensTable& lens = BuiltInLens(number);
        ASSERT_EQ(lens.Count, counts[number - 1]);
        EXPECT_NEAR(lens.Surfaces[0].Position, 1.0, 1e-6);
        EXPECT_NEAR(lens.Surfaces[lens.Count - 1].Position, -1.0, 1e-6);
        for (int i = 1; i < lens.Count; ++i)
            EXPECT_LE(lens.Surfaces[i].Position, lens.Surfaces[i - 1].Position);
    }
}

TEST(LensStore, NormalisationScalesRadiiWithPositions) {
    // The Tele-Elmar reaches from 19 to -7.5: its unit is 13.25 and its middle 5.75.
    const LensTable& lens = BuiltInLens(4);
    EXPECT_NEAR(lens.Surfaces[0].Radius, 22.0 / 13.25, 1e-6);
    EXPECT_NEAR(lens.Surfaces[4].Position, (9.0 - 5.75) / 13.25, 1e-6);
    EXPECT_NEAR(lens.Surfaces[4].Radius, -37.0 / 13.25, 1e-6);
    EXPECT_EQ(lens.Surfaces[4].Diameter, 1.0f);
    EXPECT_EQ(lens.Surfaces[1].Radius, 0.0f);
}

TEST(LensStore, NumbersOutOfRangeMeanTheNearestLens) {
    EXPECT_EQ(&BuiltInLens(-7), &BuiltInLens(1));
    EXPECT_EQ(&BuiltInLens(99), &BuiltInLens(4));
}

TEST(LensStore, MoreElementsLieBetweenTheSurfaces) {
    const LensTable& lens = BuiltInLens(1);
    for (int more : {1, 10}) {
        LensTable extended;
        std::uint32_t state = 557;
        ExtendLens(lens, more, &state, &extended);
        ASSERT_EQ(extended.Count, more == 1 ? 23 : 122);
        for (int i = 0; i < lens.Count; ++i) { // all real surfaces are kept
            const LensSurface& kept = extended.Surfaces[i * (more + 1)];
            EXPECT_EQ(kept.Position, lens.Surfaces[i].Position);
            EXPECT_EQ(kept.Radius, lens.Surfaces[i].Radius);
            EXPECT_EQ(kept.Diameter, lens.Surfaces[i].Diameter);
        }
        for (int i = 1; i < extended.Count; ++i)
            EXPECT_LT(extended.Surfaces[i].Position, extended.Surfaces[i - 1].Position);
    }
}

TEST(LensStore, MoreElementsDrawTheirSizesInOrder) {
    LensTable lens;
    lens.Count = 3;
    lens.Surfaces[0] = {4.0f, 1.0f, 1.0f};
    lens.Surfaces[1] = {8.0f, 0.0f, 3.0f};
    lens.Surfaces[2] = {0.0f, -1.0f, 1.0f};
    LensTable extended;
    std::uint32_t state = 1;
    ExtendLens(lens, 1, &state, &extended);
    ASSERT_EQ(extended.Count, 5);
    EXPECT_EQ(extended.Surfaces[1].Position, 0.5f);
    EXPECT_EQ(extended.Surfaces[1].Radius, 6.0f);
    EXPECT_EQ(extended.Surfaces[1].Diameter, static_cast<float>(2.0 * 41 / 32768)); // the first draw is 41
    std::uint32_t again = 1;
    Rand15(&again);
    EXPECT_EQ(extended.Surfaces[3].Diameter, static_cast<float>(2.0 * Rand15(&again) / 32768));
    EXPECT_EQ(state, again);
}

TEST(LensStore, TheLargestLensFillsTheTable) {
    LensTable lens;
    lens.Count = LensTable::kFileSurfaces;
    for (int i = 0; i < lens.Count; ++i)
        lens.Surfaces[i] = {0.0f, 1.0f - static_cast<float>(i) / 25.0f, 1.0f};
    LensTable extended;
    std::uint32_t state = 0;
    ExtendLens(lens, LensTable::kMoreElements, &state, &extended);
    EXPECT_EQ(extended.Count, 540);
    EXPECT_EQ(extended.Surfaces[539].Position, lens.Surfaces[49].Position);
}

} // namespace
} // namespace k7
