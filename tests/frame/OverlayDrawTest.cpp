#include "tests/support/RecordingSurface.h"

#include <gtest/gtest.h>

#include <limits>

namespace k7::test {
namespace {

constexpr float kSlack = 0.01f;

void ExpectStroke(const RecordingSurface::Stroke& stroke, float x1, float y1, float x2, float y2) {
    EXPECT_NEAR(stroke.x1, x1, kSlack);
    EXPECT_NEAR(stroke.y1, y1, kSlack);
    EXPECT_NEAR(stroke.x2, x2, kSlack);
    EXPECT_NEAR(stroke.y2, y2, kSlack);
}

TEST(OverlayDraw, ColoursLoseTheirLowByte) {
    RecordingView view;
    OverlayColour(view, 65535, 41120, 255);
    EXPECT_EQ(view.surface.Colours.at(0), (std::array<int, 3>{255, 160, 0}));
}

TEST(OverlayDraw, BoxesKeepTheirSizeOnTheDisplay) {
    RecordingView view;
    for (float zoom : {0.5f, 1.0f, 2.0f}) {
        view.surface.Clear();
        view.Zoom = zoom;
        OverlayBox(view, 100.0f, 50.0f);
        EXPECT_TRUE(view.surface.Loops.at(0).IsAt(100.0f, 50.0f, 4.0f / zoom)) << zoom;
    }
}

TEST(OverlayDraw, CrossLeavesItsPointFree) {
    RecordingView view;
    view.Zoom = 2.0f;
    OverlayCross(view, 100.0f, 50.0f, false);
    ASSERT_EQ(view.surface.Strokes.size(), 4u);
    ExpectStroke(view.surface.Strokes[0], 95.0f, 50.0f, 87.5f, 50.0f);
    ExpectStroke(view.surface.Strokes[1], 105.0f, 50.0f, 112.5f, 50.0f);
    ExpectStroke(view.surface.Strokes[2], 100.0f, 55.0f, 100.0f, 62.5f);
    ExpectStroke(view.surface.Strokes[3], 100.0f, 45.0f, 100.0f, 37.5f);

    view.surface.Clear();
    OverlayCross(view, 100.0f, 50.0f, true);
    ASSERT_EQ(view.surface.Strokes.size(), 8u);
    ExpectStroke(view.surface.Strokes[4], 97.5f, 47.5f, 93.75f, 43.75f);
}

TEST(OverlayDraw, ArrowOpensAtTwentyDegrees) {
    RecordingView view;
    OverlayArrow(view, 100.0f, 50.0f, 300.0f, 50.0f);
    ASSERT_EQ(view.surface.Strokes.size(), 2u);
    ExpectStroke(view.surface.Strokes[0], 100.0f, 50.0f, 137.588f, 36.319f);
    ExpectStroke(view.surface.Strokes[1], 100.0f, 50.0f, 137.588f, 63.681f);
}

TEST(OverlayDraw, DashedLineDrawsEverySecondPiece) {
    RecordingView view;
    OverlayDashedLine(view, 0.0f, 10.0f, 50.0f, 10.0f, 10);
    ASSERT_EQ(view.surface.Strokes.size(), 2u);
    ExpectStroke(view.surface.Strokes[0], 10.0f, 10.0f, 20.0f, 10.0f);
    ExpectStroke(view.surface.Strokes[1], 30.0f, 10.0f, 40.0f, 10.0f);
}

TEST(OverlayDraw, DashedLineStopsAtItsEnd) {
    RecordingView view;
    OverlayDashedLine(view, 34.0f, 0.0f, 0.0f, 0.0f, 10);
    ASSERT_EQ(view.surface.Strokes.size(), 2u);
    ExpectStroke(view.surface.Strokes[1], 4.0f, 0.0f, 0.0f, 0.0f);
}

TEST(OverlayDraw, DashedLineWithoutLengthDrawsNothing) {
    RecordingView view;
    OverlayDashedLine(view, 10.0f, 10.0f, 10.0f, 10.0f, 10);
    OverlayDashedLine(view, 10.0f, 10.0f, 50.0f, 10.0f, 0);
    OverlayDashedLine(view, 10.0f, 10.0f, std::numeric_limits<float>::quiet_NaN(), 10.0f, 3);
    EXPECT_TRUE(view.surface.Strokes.empty());
}

TEST(OverlayDraw, EllipseIsClosedAndOnItsCurve) {
    RecordingView view;
    OverlayEllipse(view, 200.0f, 100.0f, 80.0f, 40.0f, 90.0f, false, 4, 0.0f, 360.0f);
    ASSERT_GT(view.surface.Strokes.size(), 60u); // 80 pi / 4 = 62.8
    for (std::size_t i = 0; i < view.surface.Strokes.size(); ++i) {
        const auto& stroke = view.surface.Strokes[i];
        const float u = (stroke.x1 - 200.0f) / 20.0f; // turned by a right angle: 40 wide, 80 high
        const float v = (stroke.y1 - 100.0f) / 40.0f;
        EXPECT_NEAR(u * u + v * v, 1.0f, 1e-3f);
        const auto& next = view.surface.Strokes[(i + 1) % view.surface.Strokes.size()];
        EXPECT_NEAR(stroke.x2, next.x1, kSlack);
        EXPECT_NEAR(stroke.y2, next.y1, kSlack);
    }
}

TEST(OverlayDraw, SmallEllipseIsCutIntoTenAtLeast) {
    RecordingView view;
    OverlayEllipse(view, 200.0f, 100.0f, 5.0f, 5.0f, 0.0f, false, 4, 0.0f, 360.0f);
    EXPECT_GE(view.surface.Strokes.size(), 10u);
    view.surface.Clear();
    OverlayEllipse(view, 200.0f, 100.0f, 4.9f, 50.0f, 0.0f, false, 4, 0.0f, 360.0f);
    OverlayEllipse(view, 200.0f, 100.0f, 50.0f, 4.9f, 0.0f, false, 4, 0.0f, 360.0f);
    EXPECT_TRUE(view.surface.Strokes.empty());
}

TEST(OverlayDraw, ArcAndDashes) {
    RecordingView view;
    OverlayEllipse(view, 200.0f, 100.0f, 40.0f, 40.0f, 0.0f, false, 4, 0.0f, 90.0f);
    const std::size_t all = view.surface.Strokes.size();
    for (const auto& stroke : view.surface.Strokes) {
        EXPECT_GE(stroke.x2, 199.9f);
        EXPECT_GE(stroke.y2, 99.9f);
    }
    view.surface.Clear();
    OverlayEllipse(view, 200.0f, 100.0f, 40.0f, 40.0f, 0.0f, true, 4, 0.0f, 90.0f);
    EXPECT_EQ(view.surface.Strokes.size(), (all + 1) / 2);
}

TEST(OverlayDraw, HugeShapesEndInBoundedTime) {
    RecordingView view;
    OverlayEllipse(view, 0.0f, 0.0f, 1e30f, 1e30f, 0.0f, false, 4, 0.0f, 360.0f);
    OverlayDashedLine(view, 0.0f, 0.0f, 2e9f, 2e9f, 3);
    EXPECT_LT(view.surface.Strokes.size(), 40000u);
}

} // namespace
} // namespace k7::test
