#include "lens/GhostScan.h"
#include "tests/lens/PlainGhost.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

namespace k7::test {
namespace {

/// Planes of sums with a canvas over all of them.
struct Planes {
    Planes(int width, int height) : cells(3 * static_cast<std::size_t>(width * height)) {
        canvas.Red = cells.data();
        canvas.Green = canvas.Red + width * height;
        canvas.Blue = canvas.Green + width * height;
        canvas.Width = width;
        canvas.HighX = 2 * width - 1;
        canvas.HighY = 2 * height - 1;
    }
    std::vector<int> cells;
    GhostCanvas canvas;
};

class RandomGhosts {
public:
    explicit RandomGhosts(float size) : size_(size) {}

    float Unit() { return std::uniform_real_distribution<float>()(random_); }
    GhostPoint Point() { return {size_ * (1.2f * Unit() - 0.1f), size_ * (1.2f * Unit() - 0.1f)}; }

    GhostLight Light() {
        GhostLight light;
        light.Red = static_cast<int>(60000.0f * Unit());
        light.Green = static_cast<int>(60000.0f * Unit());
        light.Blue = static_cast<int>(60000.0f * Unit());
        light.Peak = std::max({light.Red, light.Green, light.Blue});
        const GhostPoint centre = Point();
        light.CentreX = Unit() < 0.3f ? std::floor(centre.X) : centre.X; // sometimes on a sample
        light.CentreY = Unit() < 0.3f ? std::floor(centre.Y) : centre.Y;
        light.InnerRadius = size_ * Unit() * 0.2f;
        light.OuterRadius = Unit() < 0.1f ? light.InnerRadius : size_ * Unit();
        light.DirX = 1.6f * Unit() - 0.8f;
        light.DirY = 1.6f * Unit() - 0.8f;
        light.Falloff = 4.0f * Unit();
        light.EdgeBoost = Unit() < 0.7f;
        return light;
    }

    GhostTriangle Triangle(const GhostLight& light) {
        GhostTriangle triangle{&light, {Point(), Point(), Point()}, Point(), Point()};
        if (Unit() < 0.1f) triangle.Next = triangle.Vertices[2]; // sides that are points
        if (Unit() < 0.1f) triangle.Previous = {triangle.Vertices[1].X + 0.002f, triangle.Vertices[1].Y};
        return triangle;
    }

private:
    std::mt19937 random_{7};
    float size_;
};

TEST(GhostShade, SpansEqualThePlainImplementation) {
    constexpr int width = 301; // longer than a run
    constexpr int height = 60;
    RandomGhosts random(2.0f * width);
    for (int i = 0; i < 400; ++i) {
        const GhostLight light = random.Light();
        const GhostTriangle triangle = random.Triangle(light);
        Planes got(width, height), want(width, height);
        got.canvas.AspectX = want.canvas.AspectX = i % 3 == 0 ? 2.0f : 1.0f;
        got.canvas.AspectY = want.canvas.AspectY = i % 5 == 0 ? 1.1f : 1.0f;
        const float xa = random.Point().X;
        const float xb = xa + random.Point().X * random.Unit();
        for (int y = i % 4; y < 2 * height; y += 17) {
            ShadeSpan(got.canvas, triangle, y, xa, xb);
            PlainSpan(want.canvas, triangle, y, xa, xb);
        }
        ASSERT_EQ(got.cells, want.cells) << i;
    }
}

/// A light round (0, 0) that falls off between two radii.
GhostLight Grey(int level, float inner, float outer) {
    GhostLight light;
    light.Red = light.Green = light.Blue = light.Peak = level;
    light.InnerRadius = inner;
    light.OuterRadius = outer;
    light.Falloff = 1.0f;
    return light;
}

TEST(GhostShade, TheCentreIsWhiteWithoutRim) {
    GhostLight light = Grey(1000, 100.0f, 200.0f);
    light.Green = light.Blue = 0;
    light.CentreX = light.CentreY = 4.0f;
    light.EdgeBoost = true;
    const GhostTriangle triangle{&light, {{4, 4}, {4, 0}, {8, 0}}, {0, 0}, {9, 9}};
    Planes planes(8, 8);
    ShadeSpan(planes.canvas, triangle, 4, 4.0f, 6.0f); // samples 4 and 5
    EXPECT_EQ(planes.canvas.Red[2 * 8 + 2], 3 * 2000);
    EXPECT_EQ(planes.canvas.Green[2 * 8 + 2], 3 * 1000); // only the centre: no direction, no whitening
}

TEST(GhostShade, EqualRadiiMakeAnEdge) {
    const GhostLight light = Grey(1000, 10.0f, 10.0f);
    const GhostTriangle triangle{&light, {{0, 0}, {90, 0}, {90, 90}}, {0, 0}, {0, 90}};
    Planes planes(20, 1);
    ShadeSpan(planes.canvas, triangle, 0, 0.0f, 40.0f);
    EXPECT_EQ(planes.canvas.Red[4], 6000); // samples 8 and 9
    EXPECT_EQ(planes.canvas.Red[5], 3000); // 10 is within, 11 beyond
    EXPECT_EQ(planes.canvas.Red[6], 0);
}

TEST(GhostShade, SumsStopBeforeTheyOverflow) {
    GhostLight light = Grey(std::numeric_limits<int>::max(), 100.0f, 200.0f);
    light.Green = std::numeric_limits<int>::min();
    const GhostTriangle triangle{&light, {{0, 0}, {90, 0}, {90, 90}}, {0, 0}, {0, 90}};
    Planes planes(4, 1);
    for (int i = 0; i < 10000; ++i) ShadeSpan(planes.canvas, triangle, 1, 1.0f, 8.0f);
    EXPECT_GT(planes.canvas.Red[2], 4 * kFullScale);
    EXPECT_LT(planes.canvas.Green[2], 0);
}

TEST(GhostScan, AFanCoversEverySampleOnce) {
    const GhostLight light = Grey(100, 1e6f, 2e6f); // the same for every sample
    const GhostPoint corners[] = {{3.2f, 2.4f}, {50.7f, 6.1f}, {61.3f, 40.8f}, {30.1f, 70.3f}, {1.4f, 44.9f}};
    const GhostPoint middle{29.7f, 33.3f};
    Planes planes(40, 40);
    for (int k = 0; k < 5; ++k)
        ScanTriangle(planes.canvas, {&light, {middle, corners[k], corners[(k + 1) % 5]}, {0, 0}, {0, 0}});
    double area = 0.0;
    for (int k = 0; k < 5; ++k)
        area += 0.5 * (corners[k].X * corners[(k + 1) % 5].Y - corners[(k + 1) % 5].X * corners[k].Y);
    int covered = 0;
    for (int i = 0; i < 40 * 40; ++i) {
        ASSERT_LE(planes.canvas.Red[i], 4 * 300) << i; // no sample twice
        covered += planes.canvas.Red[i] / 300;
    }
    EXPECT_NEAR(covered, area, 0.02 * area);
    EXPECT_EQ(planes.canvas.Red[16 * 40 + 15], 4 * 300); // and none omitted inside
}

TEST(GhostScan, SamplesAreTheCentresOfTheirCells) {
    const GhostLight light = Grey(100, 1e6f, 2e6f); // the same for every sample
    Planes planes(8, 8);
    ScanTriangle(planes.canvas, {&light, {{2, 2}, {10, 2}, {2, 10}}, {0, 0}, {0, 0}});
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 8; ++x) {
            int inside = 0;
            for (int sample = 0; sample < 4; ++sample) {
                const double sx = 2 * x + sample % 2 + 0.5;
                const double sy = 2 * y + sample / 2 + 0.5;
                inside += sx >= 2.0 && sy >= 2.0 && sx + sy <= 12.0;
            }
            EXPECT_NEAR(planes.canvas.Red[y * 8 + x], 300 * inside, x + y == 4 || x + y == 5 ? 600 : 0)
                << x << ' ' << y;
        }
}

TEST(GhostScan, TrianglesWithoutAreaEnd) {
    const GhostLight light = Grey(100, 1e6f, 2e6f); // the same for every sample
    Planes planes(8, 8);
    for (const GhostPoint to : {GhostPoint{1, 1}, {9, 1}, {1, 9}, {1, 1.000001f}}) {
        ScanTriangle(planes.canvas, {&light, {{1, 1}, to, to}, {0, 0}, {0, 0}});
        ScanTriangle(planes.canvas, {&light, {{1, 1}, {1, 1}, to}, {0, 0}, {0, 0}});
    }
    for (int sum : planes.cells) EXPECT_LE(sum, 4 * 300 * 8);
}

} // namespace
} // namespace k7::test
