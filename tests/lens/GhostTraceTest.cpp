#include "lens/GhostTrace.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace k7 {
namespace {

LensTable OneSurface(float radius, float position) {
    LensTable lens;
    lens.Count = 1;
    lens.Surfaces[0] = {radius, position, 1.0f};
    return lens;
}

TEST(GhostTrace, AxialRayHitsTheVertex) {
    const float ray[6] = {0.0f, 0.0f, 1.0f, 0.0f, 0.0f, -1.0f};
    for (float radius : {0.0f, 0.4f, 3.0f, -0.4f, -3.0f}) {
        float point[3];
        ASSERT_TRUE(IntersectSurface(OneSurface(radius, 0.25f), 0, ray, point)) << radius;
        EXPECT_EQ(point[0], 0.0f);
        EXPECT_NEAR(point[2], 0.25f, 1e-6f) << radius;
    }
}

TEST(GhostTrace, HitsLieOnTheRayAndOnTheVertexSideOfTheSphere) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> unit(-1.0f, 1.0f);
    int hits = 0;
    for (int i = 0; i < 2000; ++i) {
        const float radius = 4.0f * unit(random);
        const float position = unit(random);
        float ray[6] = {unit(random), unit(random), 1.0f, unit(random), unit(random), -2.0f};
        const float length = std::hypot(ray[3], ray[4], ray[5]);
        for (int c = 3; c < 6; ++c) ray[c] /= length;
        float point[3];
        if (!IntersectSurface(OneSurface(radius, position), 0, ray, point)) continue;
        ++hits;
        const double centre = position - radius;
        EXPECT_NEAR(std::hypot(point[0], point[1], point[2] - centre), std::abs(radius), 2e-5);
        EXPECT_GE((point[2] - centre) * radius, -1e-5);
        const double t = (point[2] - ray[2]) / ray[5];
        EXPECT_GE(t, 0.0);
        EXPECT_NEAR(point[0], ray[0] + t * ray[3], 1e-5);
        EXPECT_NEAR(point[1], ray[1] + t * ray[4], 1e-5);
    }
    EXPECT_GT(hits, 300);
    EXPECT_LT(hits, 1800); // and some missed
}

TEST(GhostTrace, Misses) {
    float point[3] = {7.0f, 8.0f, 9.0f};
    const float down[6] = {0.5f, 0.0f, 1.0f, 0.0f, 0.0f, -1.0f};
    EXPECT_FALSE(IntersectSurface(OneSurface(0.25f, 0.0f), 0, down, point)); // beside the sphere
    EXPECT_FALSE(IntersectSurface(OneSurface(0.0f, 2.0f), 0, down, point));  // a plane behind the start
    EXPECT_FALSE(IntersectSurface(OneSurface(1.0f, 5.0f), 0, down, point));  // a sphere behind it
    EXPECT_FALSE(IntersectSurface(OneSurface(0.0f, 0.0f), 1, down, point));  // no such surface
    EXPECT_FALSE(IntersectSurface(OneSurface(0.0f, 0.0f), -1, down, point));
    const float level[6] = {0.0f, 0.0f, 1.0f, 1.0f, 0.0f, 0.0f};
    EXPECT_FALSE(IntersectSurface(OneSurface(0.0f, 0.0f), 0, level, point)); // along a plane
    EXPECT_EQ(point[0], 7.0f);                                               // none of them left a point

    // From above, a sphere that opens upward is first met on the half without the vertex.
    EXPECT_FALSE(IntersectSurface(OneSurface(-0.6f, -0.2f), 0, down, point));
    EXPECT_EQ(point[0], 0.5f);
    EXPECT_GT(point[2], 0.4f);
}

TEST(GhostTrace, ATangentRayTouchesOnce) {
    float point[3];
    const float ray[6] = {1.0f, 0.0f, 0.0f, 0.0f, 0.0f, -1.0f}; // starts where it touches: both roots are 0
    ASSERT_TRUE(IntersectSurface(OneSurface(1.0f, 1.0f), 0, ray, point));
    EXPECT_EQ(point[0], 1.0f);
    EXPECT_EQ(point[2], 0.0f);
}

TEST(GhostTrace, ExtremeNumbersMissOrHitWithoutFaults) {
    const float bad[] = {NAN, INFINITY, -INFINITY, 3e38f, -3e38f, 1e-45f, 0.0f};
    for (float radius : bad)
        for (float position : bad)
            for (float start : bad) {
                const float ray[6] = {start, 0.0f, 1.0f, 0.0f, 0.0f, -1.0f};
                float point[3] = {};
                const bool hit = IntersectSurface(OneSurface(radius, position), 0, ray, point);
                EXPECT_FALSE(hit && (std::isnan(radius) || std::isnan(position))) << start;
            }
}

} // namespace
} // namespace k7
