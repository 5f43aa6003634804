#include "lens/GhostPolygon.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <initializer_list>
#include <numbers>

namespace k7 {
namespace {

constexpr GhostRect kFrame = {0.0f, 100.0f, 0.0f, 50.0f};

GhostPolygon Polygon(std::initializer_list<GhostPoint> points) {
    GhostPolygon polygon;
    for (const GhostPoint& point : points) polygon.Vertices[polygon.Count++] = point;
    return polygon;
}

GhostPolygon Round(int sides, float x, float y, float radius) {
    GhostPolygon polygon;
    for (int k = 0; k < sides; ++k) {
        const double angle = 2.0 * std::numbers::pi * k / sides;
        polygon.Vertices[polygon.Count++] = {x + radius * static_cast<float>(std::cos(angle)),
                                             y + radius * static_cast<float>(std::sin(angle))};
    }
    return polygon;
}

double Area(const GhostPolygon& polygon) {
    double sum = 0.0;
    for (int i = 0; i < polygon.Count; ++i) {
        const GhostPoint& a = polygon.Vertices[i];
        const GhostPoint& b = polygon.Vertices[(i + 1) % polygon.Count];
        sum += 0.5 * (static_cast<double>(a.X) * b.Y - static_cast<double>(b.X) * a.Y);
    }
    return sum;
}

TEST(GhostPolygon, RejectsOnlyWhatLiesBeyondOneSide) {
    for (const GhostPoint centre : {GhostPoint{-20, 25}, {120, 25}, {50, -20}, {50, 70}}) {
        GhostPolygon outside = Round(7, centre.X, centre.Y, 10.0f);
        EXPECT_FALSE(RejectPolygon(&outside, kFrame));
        EXPECT_EQ(outside.Count, 0);
    }
    // Round the corner: outside, but not beyond any one side.
    GhostPolygon corner = Polygon({{-30, 60}, {-10, 90}, {50, 90}});
    EXPECT_FALSE(RejectPolygon(&corner, kFrame));
    GhostPolygon diagonal = Polygon({{-10, 45}, {10, 80}, {-10, 80}});
    EXPECT_TRUE(RejectPolygon(&diagonal, kFrame));
    EXPECT_EQ(diagonal.Count, 3);
    EXPECT_FALSE(ClipPolygon(&diagonal, kFrame)); // clipping finds that nothing remains
    EXPECT_EQ(diagonal.Count, 0);
}

TEST(GhostPolygon, KeepsWhatLiesInside) {
    GhostPolygon inside = Round(86, 50.0f, 25.0f, 25.0f - 1e-3f);
    const GhostPolygon before = inside;
    EXPECT_TRUE(ClipPolygon(&inside, kFrame));
    EXPECT_EQ(std::memcmp(inside.Vertices, before.Vertices, sizeof before.Vertices), 0);
    EXPECT_EQ(inside.Count, before.Count);
}

TEST(GhostPolygon, ClipsToTheRectangle) {
    GhostPolygon square = Polygon({{-10, -10}, {60, -10}, {60, 20}, {-10, 20}});
    EXPECT_TRUE(ClipPolygon(&square, kFrame));
    EXPECT_NEAR(Area(square), 60.0 * 20.0, 1e-3);

    GhostPolygon cover = Polygon({{-500, -100}, {500, -100}, {50, 900}});
    EXPECT_TRUE(ClipPolygon(&cover, kFrame));
    EXPECT_NEAR(Area(cover), 100.0 * 50.0, 1e-2);

    GhostPolygon disc = Round(86, 0.0f, 0.0f, 40.0f); // a quarter of it remains
    const double area = Area(disc);
    EXPECT_TRUE(ClipPolygon(&disc, kFrame));
    EXPECT_NEAR(Area(disc), area / 4.0, 1.0);
}

TEST(GhostPolygon, TheLargestOutlinesFitIntoTheirRoom) {
    GhostPolygon disc = Round(GhostPolygon::kMaxSides, 50.0f, 25.0f, 55.0f); // over all four sides
    EXPECT_TRUE(ClipPolygon(&disc, kFrame));
    EXPECT_LE(disc.Count, GhostPolygon::kRoom);
    for (int i = 0; i < disc.Count; ++i) {
        EXPECT_NEAR(disc.Vertices[i].X, 50.0f, 50.0001f);
        EXPECT_NEAR(disc.Vertices[i].Y, 25.0f, 25.0001f);
    }

    GhostPolygon star; // folds: every second vertex beyond two sides
    for (int k = 0; k < GhostPolygon::kMaxSides; ++k)
        star.Vertices[star.Count++] =
            k % 2 ? GhostPoint{-300.0f, -200.0f} : GhostPoint{50.0f + static_cast<float>(k), 25.0f};
    EXPECT_TRUE(ClipPolygon(&star, kFrame));
    EXPECT_LE(star.Count, GhostPolygon::kRoom);
}

} // namespace
} // namespace k7
