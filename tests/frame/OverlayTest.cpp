#include "tests/support/FakeInput.h"
#include "tests/support/RecordingSurface.h"

#include <gtest/gtest.h>

#include <numbers>

namespace k7::test {
namespace {

using Undo = std::vector<std::string>;

/// Presses at one point, moves to another and releases there.
void Drag(OverlayControlK7& widget, float x1, float y1, float x2, float y2) {
    widget.Event(kOverlayPress, x1, y1);
    widget.Event(kOverlayDrag, x2, y2);
    widget.Event(kOverlayRelease, x2, y2);
}

struct Cross : RecordingView {
    Cross() {
        widget.Owner = this;
        widget.Link.Input[0] = &input;
        widget.Link.Control[0] = &control;
        widget.X = 0.5f;
        widget.Y = 0.25f;
        widget.Draw();
    }
    FakeInput input{"Centre"};
    PositionControlK7 control;
    CrosshairOverlayK7 widget;
};

TEST(OverlayCrosshair, HitIsStrictlyWithinFivePixelsOfTheDisplay) {
    Cross cross;
    const auto hits = [&](float x, float y) {
        cross.widget.Event(kOverlayHover, 200.0f + x, 50.0f + y);
        return cross.widget.Hover == 1;
    };
    for (float zoom : {0.5f, 1.0f, 2.0f})
        for (float edge : {-5.0f / zoom, 5.0f / zoom}) {
            cross.Zoom = zoom;
            EXPECT_FALSE(hits(edge, 0.0f) || hits(0.0f, edge)) << zoom;
            EXPECT_TRUE(hits(0.95f * edge, 0.0f) && hits(0.0f, 0.95f * edge)) << zoom;
        }
}

TEST(OverlayCrosshair, DragWritesThePointAtTheDocumentsTime) {
    Cross cross;
    cross.DocumentTime = 12.0;
    Drag(cross.widget, 201.0f, 52.0f, 100.0f, 150.0f);
    EXPECT_TRUE(cross.input.X == 0.25 && cross.input.Y == 0.75);
    EXPECT_TRUE(cross.control.Value.x == 0.25 && cross.control.Value.y == 0.75);
    EXPECT_DOUBLE_EQ(cross.input.LastTime, 12.0);
    EXPECT_EQ(cross.widget.Active, 0);
}

TEST(OverlayCrosshair, NothingIsWrittenWithoutADrag) {
    Cross cross;
    cross.widget.Event(kOverlayHover, 200.0f, 50.0f);
    EXPECT_EQ(cross.input.Undo, Undo{});
    cross.widget.Event(kOverlayPress, 200.0f, 50.0f);
    cross.widget.Event(kOverlayRelease, 200.0f, 50.0f);
    Drag(cross.widget, 20.0f, 50.0f, 100.0f, 150.0f); // the press misses
    EXPECT_EQ(cross.input.Writes, 0);
    EXPECT_EQ(cross.input.Undo, (Undo{"start Centre", "end keep"}));
}

TEST(OverlayCrosshair, UndoStepIsNamedAfterToolAndInput) {
    const std::array<const char*, 3> cases[] = {{"Zoom1", "Centre", "start Zoom1: Centre"},
                                                {"", "Centre", "start Centre"},
                                                {"Zoom1", "", "start Zoom1: Unknown"},
                                                {"", "", "start Unknown"}};
    for (const auto& [tool, input, title] : cases) {
        Cross cross;
        cross.OperatorName = tool;
        cross.input.Label = input;
        Drag(cross.widget, 200.0f, 50.0f, 100.0f, 150.0f);
        EXPECT_EQ(cross.input.Undo, (Undo{title, "end keep"}));
    }
}

TEST(OverlayLine, MovesAsAWhole) {
    RecordingView view;
    FakeInput inputs[2] = {FakeInput("Start"), FakeInput("End")};
    PositionControlK7 ends[2];
    LineOverlayK7 line;
    line.Owner = &view;
    for (int i = 0; i < 2; ++i) {
        line.Link.Input[i] = &inputs[i];
        line.Link.Control[i] = &ends[i];
    }
    line.X1 = line.Y2 = 0.75f;
    line.Y1 = line.X2 = 0.25f;
    line.Draw();
    EXPECT_TRUE(view.surface.Loops.at(0).IsAt(200.0f, 100.0f, 4.0f));

    Drag(line, 200.0f, 100.0f, 300.0f, 50.0f);
    const Undo titles = {"start Start", "start End"};
    for (std::size_t i : {0u, 1u}) {
        EXPECT_DOUBLE_EQ(inputs[i].X, i == 0 ? 1.0 : 0.5);
        EXPECT_DOUBLE_EQ(inputs[i].Y, i == 0 ? 0.0 : 0.5);
        EXPECT_DOUBLE_EQ(ends[i].Value.x, inputs[i].X);
        EXPECT_EQ(inputs[i].Undo, (Undo{titles[i], "end keep"}));
    }
}

struct Hand : RecordingView {
    Hand() {
        widget.Owner = this;
        widget.Link.Input[0] = &input;
        widget.Link.Control[0] = &control;
        widget.X = widget.Y = 0.5f;
        widget.Length = 0.2f;
    }
    /// Drags the handle to a place relative to the middle, and returns the angle that was written.
    double DragTo(float dx, float dy) {
        widget.Draw();
        Drag(widget, widget.HandleX, widget.HandleY, 200.0f + dx, 100.0f + dy);
        EXPECT_EQ(control.Value, input.X);
        return input.X;
    }
    FakeInput input{"Angle"};
    AngleControlK7 control;
    AngleOverlayK7 widget;
};

TEST(OverlayAngle, FollowsThePointerThroughAllQuadrants) {
    Hand hand;
    const float cases[][3] = {
        {30, 30, 45}, {-30, 30, 135}, {-30, -30, 225}, {30, -30, 315}, {50, 0, 0},
        {0, 50, 90},  {-50, 0, 180},  {0, -50, 270},   {0, 0, 270}}; // no direction: the hand stays
    for (const auto& [dx, dy, degrees] : cases) EXPECT_NEAR(hand.DragTo(dx, dy), degrees, 1e-4) << degrees;
}

TEST(OverlayAngle, DragAndDrawAgreeOnWidePixels) {
    Hand hand;
    hand.AspectX = 2.0f;
    for (float degrees : {30.0f, 80.0f, 100.0f, 190.0f, 260.0f, 350.0f}) {
        hand.widget.Angle = degrees;
        hand.widget.Draw();
        const float dx = hand.widget.HandleX - 200.0f;
        const float dy = hand.widget.HandleY - 100.0f;
        EXPECT_NEAR(dx, 80.0 * std::cos(degrees * std::numbers::pi / 180.0), 1e-3);
        EXPECT_NEAR(dy, 160.0 * std::sin(degrees * std::numbers::pi / 180.0),
                    1e-3); // twice as many rows for a length
        EXPECT_NEAR(hand.DragTo(dx, dy), degrees, 1e-3);
    }
}

template <class Widget>
struct Sized : RecordingView {
    Sized() {
        widget.Owner = this;
        widget.Link.Input[0] = &width;
        widget.Link.Input[1] = &height;
        widget.Link.Control[2] = &widthControl;
        widget.Link.Control[3] = &heightControl;
        width.Low = 0.0;
        width.High = 2.0;
        widget.X = widget.Y = 0.5f;
        widget.Width = 0.4f;
        widget.Height = 0.2f;
    }
    /// Drags a handle by a distance.
    void DragBy(int handle, float dx, float dy) {
        widget.Draw();
        const float x = widget.HandleX[handle - 1];
        const float y = widget.HandleY[handle - 1];
        Drag(widget, x, y, x + dx, y + dy);
    }
    void ExpectSizes(double wide, double high) {
        EXPECT_NEAR(width.X, wide, 1e-6);
        EXPECT_NEAR(height.X, high, 1e-6);
        EXPECT_EQ(widthControl.Value, width.X);
        EXPECT_EQ(heightControl.Value, height.X);
    }
    FakeInput width{"Width"};
    FakeInput height{"Height"};
    SizeControlK7 widthControl;
    SizeControlK7 heightControl;
    Widget widget;
};

TEST(OverlayCircle, HandlesLieOnTheTurnedEllipse) {
    Sized<CircleOverlayK7> circle;
    circle.widget.Rotation = 90.0f;
    circle.widget.Draw();
    const auto& loops = circle.surface.Loops;
    ASSERT_EQ(loops.size(), 3u);
    EXPECT_TRUE(loops[0].IsAt(200.0f, 180.0f, 4.0f)); // handle 2, the end of the width's axis
    EXPECT_TRUE(loops[1].IsAt(240.0f, 100.0f, 4.0f)); // handle 3
    EXPECT_TRUE(loops[2].IsAt(200.0f + 40.0f * 0.70710678f, 100.0f + 80.0f * 0.70710678f, 4.0f));
}

TEST(OverlayCircle, HandlesWriteTheirSizesOnly) {
    Sized<CircleOverlayK7> circle;
    circle.DragBy(2, 40.0f, 0.0f);
    circle.ExpectSizes(0.6, 0.0);
    EXPECT_EQ(circle.height.Undo, Undo{});
    circle.DragBy(3, 0.0f, -20.0f);
    circle.ExpectSizes(0.6, 0.3);
    EXPECT_EQ(circle.width.Writes, 1);
    EXPECT_EQ(circle.width.Undo, (Undo{"start Width", "end keep"}));
    EXPECT_EQ(circle.height.Undo, (Undo{"start Height", "end keep"}));
}

TEST(OverlayCircle, DiagonalHandleKeepsTheProportion) {
    Sized<CircleOverlayK7> circle;
    circle.widget.Rotation = 30.0f;
    circle.widget.Draw();
    const float dx = circle.widget.HandleX[0] - 200.0f;
    const float dy = circle.widget.HandleY[0] - 100.0f;
    circle.DragBy(1, dx, dy); // twice as far from the centre
    circle.ExpectSizes(0.8, 0.4);
    EXPECT_EQ(circle.width.Undo, (Undo{"start Width", "end keep"}));
    EXPECT_EQ(circle.height.Undo, (Undo{"start Height", "end keep"}));

    circle.widget.Link.Control[3] = nullptr; // an unlinked size is not written
    circle.DragBy(1, 10.0f, 0.0f);
    EXPECT_EQ(circle.width.Writes, 2);
    EXPECT_EQ(circle.height.Writes, 1);
    EXPECT_EQ(circle.height.Undo.size(), 2u);
}

TEST(OverlayCircle, OneSizeHasOneHandle) {
    Sized<CircleOverlayK7> circle;
    circle.widget.Circular = true;
    circle.widget.Height = circle.widget.Width;
    circle.widget.Draw();
    EXPECT_EQ(circle.surface.Loops.size(), 1u);
    for (int i : {0, 2}) {
        circle.widget.Event(kOverlayPress, circle.widget.HandleX[i], circle.widget.HandleY[i]);
        EXPECT_EQ(circle.widget.Active, 0);
    }
}

TEST(OverlayCircle, SizesStayWithinTheDisplayedRange) {
    Sized<CircleOverlayK7> circle;
    circle.DragBy(2, 1000.0f, 0.0f);
    EXPECT_DOUBLE_EQ(circle.width.X, 2.0);
    circle.width.Low = 0.5;
    circle.DragBy(2, -400.0f, 0.0f);
    EXPECT_DOUBLE_EQ(circle.width.X, 0.5);

    circle.width.Low = 0.0;
    circle.widget.Width = circle.widget.Height = 0.0f;
    circle.widget.Draw();
    circle.widget.Event(kOverlayPress, 200.0f, 100.0f);
    circle.widget.Active = 1; // all handles coincide; the proportion is NaN
    circle.widget.Event(kOverlayDrag, 250.0f, 50.0f);
    EXPECT_DOUBLE_EQ(circle.width.X, 0.0);
    EXPECT_DOUBLE_EQ(circle.height.X, 0.0);
}

TEST(OverlayRectangle, EdgesAndHandles) {
    Sized<RectangleOverlayK7> box; // 160 x 40 pixels
    box.widget.Active = 2;
    box.widget.Draw();
    ASSERT_EQ(box.surface.Strokes.size(), 4u);
    for (const auto& edge : box.surface.Strokes) {
        EXPECT_NEAR(std::fabs(edge.x1 - 200.0f), 80.0f, 1e-3f);
        EXPECT_NEAR(std::fabs(edge.y1 - 100.0f), 20.0f, 1e-3f);
    }
    const auto& loops = box.surface.Loops;
    ASSERT_EQ(loops.size(), 4u);
    EXPECT_TRUE(loops[0].IsAt(280.0f, 80.0f, 4.0f));
    EXPECT_TRUE(loops[1].IsAt(280.0f, 100.0f, 4.0f));
    EXPECT_TRUE(loops[2].IsAt(200.0f, 80.0f, 4.0f));
    EXPECT_TRUE(loops[3].IsAt(280.0f, 100.0f, 4.0f)); // the one that is being dragged
}

TEST(OverlayRectangle, TurnedOnWidePixels) {
    Sized<RectangleOverlayK7> box;
    box.AspectX = 2.0f;
    box.widget.Rotation = 90.0f;
    box.widget.Draw(); // half sizes 80 and 10 before the turn, then rows doubled
    EXPECT_NEAR(box.widget.HandleX[1], 200.0f, 1e-3f);
    EXPECT_NEAR(box.widget.HandleY[1], 100.0f + 160.0f, 1e-3f);
    EXPECT_NEAR(box.widget.HandleX[2], 210.0f, 1e-3f);
    EXPECT_NEAR(box.widget.HandleY[2], 100.0f, 1e-3f);
}

TEST(OverlayRectangle, HandlesWriteTheirSizes) {
    Sized<RectangleOverlayK7> box;
    box.DragBy(1, 20.0f, -30.0f);
    box.ExpectSizes(0.5, 0.5);
    box.DragBy(2, -50.0f, 0.0f);
    box.ExpectSizes(0.25, 0.5);
    box.DragBy(3, 0.0f, 30.0f);
    box.ExpectSizes(0.25, 0.2);
    EXPECT_EQ(box.width.Writes, 2);
    EXPECT_EQ(box.height.Writes, 2);
}

TEST(OverlayRectangle, SquareFollowsTheWidthAndStillAnswersOnItsBottom) {
    Sized<RectangleOverlayK7> box;
    box.widget.Square = true;
    box.widget.Draw();
    EXPECT_EQ(box.surface.Loops.size(), 2u);
    box.widget.Event(kOverlayPress, 200.0f, 60.0f); // 0.4 of the height as well
    EXPECT_EQ(box.widget.Active, 3);
}

} // namespace
} // namespace k7::test
