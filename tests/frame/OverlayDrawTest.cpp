#include "tests/support/RecordingSurface.h"

#include <gtest/gtest.h>

#include <limits>

namespace k7::test {
namespace {

constexpr float kSlack = 0.01f;

/// Expects exactly these strokes, in this order, and then clears the view.
void ExpectStrokes(RecordingView& view, const std::vector<RecordingSurface::Stroke>& wanted) {
    const auto& strokes = view.surface.Strokes;
    ASSERT_EQ(strokes.size(), wanted.size());
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        EXPECT_NEAR(strokes[i].x1, wanted[i].x1, kSlack) << i;
        EXPECT_NEAR(strokes[i].y1, wanted[i].y1, kSlack) << i;
        EXPECT_NEAR(strokes[i].x2, wanted[i].x2, kSlack) << i;
        EXPECT_NEAR(strokes[i].y2, wanted[i].y2, kSlack) << i;
    }
    view.surface.Clear();
}

TEST(OverlayDraw, ColoursLoseTheirLowByteAndBoxesKeepTheirSizeOnTheDisplay) {
    RecordingView view;
    OverlayColour(view, 65535, 41120, 255);
    EXPECT_EQ(view.surface.Colours.at(0), (std::array<int, 3>{255, 160, 0}));
    view.Zoom = 2.0f;
    OverlayBox(view, 100.0f, 50.0f);
    EXPECT_TRUE(view.surface.Loops.at(0).IsAt(100.0f, 50.0f, 2.0f));
}

TEST(OverlayDraw, CrossLeavesItsPointFree) {
    RecordingView view;
    view.Zoom = 2.0f;
    std::vector<RecordingSurface::Stroke> strokes = {{95.0f, 50.0f, 87.5f, 50.0f},
                                                     {105.0f, 50.0f, 112.5f, 50.0f},
                                                     {100.0f, 55.0f, 100.0f, 62.5f},
                                                     {100.0f, 45.0f, 100.0f, 37.5f}};
    OverlayCross(view, 100.0f, 50.0f, false);
    ExpectStrokes(view, strokes);
    for (float u : {-1.0f, 1.0f})
        for (float v : {-1.0f, 1.0f})
            strokes.push_back({100.0f + 2.5f * u, 50.0f + 2.5f * v, 100.0f + 6.25f * u, 50.0f + 6.25f * v});
    OverlayCross(view, 100.0f, 50.0f, true);
    ExpectStrokes(view, strokes);
}

TEST(OverlayDraw, ArrowOpensAtTwentyDegrees) {
    RecordingView view;
    OverlayArrow(view, 100.0f, 50.0f, 300.0f, 50.0f);
    ExpectStrokes(view, {{100.0f, 50.0f, 137.588f, 36.319f}, {100.0f, 50.0f, 137.588f, 63.681f}});
}

TEST(OverlayDraw, DashedLineDrawsEverySecondPieceUpToItsEnd) {
    RecordingView view;
    OverlayDashedLine(view, 0.0f, 10.0f, 50.0f, 10.0f, 10);
    ExpectStrokes(view, {{10.0f, 10.0f, 20.0f, 10.0f}, {30.0f, 10.0f, 40.0f, 10.0f}});
    OverlayDashedLine(view, 34.0f, 0.0f, 0.0f, 0.0f, 10);
    ExpectStrokes(view, {{24.0f, 0.0f, 14.0f, 0.0f}, {4.0f, 0.0f, 0.0f, 0.0f}});
    OverlayDashedLine(view, 10.0f, 10.0f, 10.0f, 10.0f, 10);
    OverlayDashedLine(view, 10.0f, 10.0f, 50.0f, 10.0f, 0);
    OverlayDashedLine(view, 10.0f, 10.0f, std::numeric_limits<float>::quiet_NaN(), 10.0f, 3);
    ExpectStrokes(view, {});
}

TEST(OverlayDraw, EllipseIsClosedAndOnItsCurve) {
    RecordingView view;
    OverlayEllipse(view, 200.0f, 100.0f, 80.0f, 40.0f, 90.0f, false, 4, 0.0f, 360.0f);
    const auto& strokes = view.surface.Strokes;
    ASSERT_GT(strokes.size(), 60u); // 80 pi / 4 = 62.8
    for (std::size_t i = 0; i < strokes.size(); ++i) {
        const auto& stroke = strokes[i];
        const float u = (stroke.x1 - 200.0f) / 20.0f; // turned by a right angle: 40 wide, 80 high
        const float v = (stroke.y1 - 100.0f) / 40.0f;
        EXPECT_NEAR(u * u + v * v, 1.0f, 1e-3f);
        const auto& next = strokes[(i + 1) % strokes.size()];
        EXPECT_NEAR(stroke.x2, next.x1, kSlack);
        EXPECT_NEAR(stroke.y2, next.y1, kSlack);
    }
}

TEST(OverlayDraw, EllipsesHaveAtLeastTenStrokesOrAreNotDrawn) {
    RecordingView view;
    const auto strokes = [&](float width, float height, bool dashed, float end) {
        view.surface.Clear();
        OverlayEllipse(view, 200.0f, 100.0f, width, height, 0.0f, dashed, 4, 0.0f, end);
        return view.surface.Strokes.size();
    };
    EXPECT_GE(strokes(5.0f, 5.0f, false, 360.0f), 10u);
    EXPECT_EQ(strokes(4.9f, 50.0f, false, 360.0f) + strokes(50.0f, 4.9f, false, 360.0f), 0u);
    const std::size_t all = strokes(40.0f, 40.0f, false, 90.0f);
    for (const auto& stroke : view.surface.Strokes) EXPECT_TRUE(stroke.x2 >= 199.9f && stroke.y2 >= 99.9f);
    EXPECT_EQ(strokes(40.0f, 40.0f, true, 90.0f), (all + 1) / 2);
}

TEST(OverlayDraw, HugeShapesTakeBoundedTime) {
    RecordingView view;
    OverlayEllipse(view, 0.0f, 0.0f, 1e30f, 1e30f, 0.0f, false, 4, 0.0f, 360.0f);
    OverlayDashedLine(view, 0.0f, 0.0f, 2e9f, 2e9f, 3);
    EXPECT_LT(view.surface.Strokes.size(), 40000u);
}

} // namespace
} // namespace k7::test
