#include "frame/adapter/OverlayOperatorK7.h"
#include "tests/adapter/TestTool.h"

#include <gtest/gtest.h>

#include <vector>

namespace k7::test {
namespace {

/// A core with two widgets that positions their handles without drawing.
class WidgetProbe : public PluginK7, public OverlayK7 {
public:
    void Process() override {
        if (OnProcess) OnProcess();
    }
    void Draw() override {
        ++Draws;
        Cross.HandleX = Cross.X = static_cast<float>(Centre.Shown.x) * 400.0f;
        Cross.HandleY = static_cast<float>(Centre.Shown.y) * 200.0f;
        for (int i = 0; i < 3; ++i) {
            Box.HandleX[i] = 20.0f * static_cast<float>(i + 1);
            Box.HandleY[i] = 10.0f;
        }
    }
    void Event(int event, float x, float y) override {
        Events.push_back(event);
        Places.push_back({x, y});
        Box.Event(event, x, y);
        Cross.Event(event, x, y);
    }

    ImageInputK7 Input;
    ImageOutputK7 Output;
    CrosshairOverlayK7 Cross;
    RectangleOverlayK7 Box;
    PositionControlK7 Centre;
    FloatControlK7 Wide;
    FloatControlK7 High;
    FloatControlK7 Other;

    std::function<void()> OnProcess;
    int Draws = 0;
    std::vector<int> Events;
    std::vector<std::pair<float, float>> Places;
};

class DFWidgets : public OverlayOperatorK7 {
public:
    explicit DFWidgets(host::FusionDoc* document)
        : OverlayOperatorK7({nullptr, kNoScript, {{host::kTagDocument, document}}})
        , core(MakeCore<WidgetProbe>()) {
        Name = "Probe1";
        Page("K7 Probe");
        Add(core.Centre, {"Centre", "Cent"}, Offset{0.5, 0.5});
        Add(core.Wide, {"Width", "Wide"}, Slider{0.4, 0, 1});
        Add(core.High, {"Height", "High"}, Slider{0.4, 0, 1});
        Add(core.Other, {"Other", "Othe"}, Slider{0.4, 0, 1});
        AddMainImage(core.Input, "Clip");
        AddImageOutput(core.Output);
        AddWidget(core.Cross, kWhite, core.Centre);
        AddWidget(core.Box, {1, 2, 3}, core.Centre, core.Wide, core.High);
    }
    WidgetProbe& core;
};

/// A view whose OpenGL is not used.
class BlindView : public host::PreviewInfo {
public:
    BlindView() {
        ImageWidth = 400;
        ImageHeight = 200;
    }
    double TransformXOut(double x) const override { return x; }
    double TransformYOut(double y) const override { return y; }
    void Color4ub(int, int, int, int) override {}
};

class OverlayOperator : public testing::Test {
protected:
    OverlayOperator() {
        document.CurrentTime = 7.0;
        tool.AddControls(&view, nullptr);
        Draw();
    }

    host::OperatorControl* Control() { return tool.Controls.Entries.at(0).get(); }
    BlindView* PointTo(double x, double y) {
        view.PointerX = x;
        view.PointerY = y;
        return &view;
    }
    int Down(double x, double y) { return tool.ControlDown(Control(), PointTo(x, y), nullptr, nullptr); }
    void Move(double x, double y) { tool.ControlMove(Control(), PointTo(x, y), nullptr, nullptr); }
    void Up(double x, double y) { tool.ControlUp(Control(), PointTo(x, y), nullptr, nullptr); }
    void Draw() { tool.GLDrawControls(Control(), &view, nullptr); }
    host::Curve Key(double end) {
        host::Curve keyed;
        keyed.Keys = {{0.0, {0.0, 0.0}}, {10.0, {end, end}}};
        centre.SetCurve(keyed);
        return keyed;
    }

    host::FusionDoc document;
    DFWidgets tool{&document};
    WidgetProbe& core = tool.core;
    host::Input& centre = *tool.FindInput("Cent");
    BlindView view;
};

TEST_F(OverlayOperator, LinksWidgetsAndMakesOneControlForEachView) {
    EXPECT_EQ(core.Cross.Colour[0], 65535);
    for (int c = 0; c < 3; ++c) EXPECT_EQ(core.Box.Colour[c], c + 1);
    EXPECT_EQ(core.Box.Link.Control[0], &core.Centre);
    EXPECT_EQ(core.Box.Link.Control[3], &core.High);
    tool.AddControls(&view, nullptr);
    ASSERT_EQ(tool.Controls.Entries.size(), 1u);
    EXPECT_EQ(Control()->Document, &document);
    EXPECT_EQ(Control()->GetAttrP(host::kTagOwner), static_cast<const void*>(&tool));
    BlindView second;
    tool.AddControls(&second, nullptr);
    EXPECT_EQ(tool.Controls.Entries.size(), 2u);
}

TEST_F(OverlayOperator, DragSendsPressMovesAndRelease) {
    EXPECT_EQ(Down(0.5, 0.5), host::kDragControl);
    Move(0.25, 0.75);
    const int drawings = core.Draws;
    Up(0.25, 0.75);
    EXPECT_EQ(core.Events, (std::vector<int>{1, 2, 2, 3})); // a move without a drawing is sent twice
    EXPECT_EQ(core.Draws, drawings + 1);
    EXPECT_EQ(core.Centre.Value.x, 0.25);
    EXPECT_EQ(core.Centre.Value.y, 0.75);

    Control()->DrawWhileMoving = true;
    Down(0.25, 0.75);
    Move(0.5, 0.5);
    EXPECT_EQ(core.Events, (std::vector<int>{1, 2, 2, 3, 1, 2}));
    EXPECT_EQ(core.Draws, drawings + 2);
    EXPECT_EQ(core.Cross.HandleX, 200.0f);
}

TEST_F(OverlayOperator, PressThatMissesIsOverAtOnce) {
    EXPECT_EQ(Down(0.9, 0.9), host::kDragNone);
    EXPECT_EQ(core.Events, (std::vector<int>{1, 3}));
    Move(0.5, 0.5); // no drag has begun on this control
    Up(0.5, 0.5);
    EXPECT_EQ(core.Events.size(), 2u);
    EXPECT_TRUE(document.UndoTitles().empty());
}

TEST_F(OverlayOperator, SecondPressOfADragReleasesWhereTheFirstOneWas) {
    Down(0.5012, 0.4988);
    EXPECT_EQ(core.Places.at(0), (std::pair{200.0f, 100.0f})); // rounded to pixels
    EXPECT_EQ(Down(0.9, 0.9), host::kDragNone);
    EXPECT_EQ(core.Events, (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(core.Places.back(), (std::pair{200.0f, 100.0f}));
    Down(0.5013, 0.5026);
    EXPECT_EQ(core.Places.back(), (std::pair{201.0f, 101.0f}));
}

TEST_F(OverlayOperator, ADragIsOneStepOfUndoAtTheDocumentsTime) {
    const host::Curve keyed = Key(0.0);
    Draw();
    Down(0.0, 0.0);
    Move(0.4, 0.5);
    Move(0.25, 0.75);
    Up(0.25, 0.75);
    EXPECT_EQ(centre.GetCurve().Keys.at(7.0), (host::Curve::Value{0.25, 0.75}));
    EXPECT_EQ(document.UndoTitles(), std::vector<std::string>{"Probe1: Centre"});
    EXPECT_TRUE(document.Undo());
    EXPECT_EQ(centre.GetCurve(), keyed);

    Down(0.0, 0.0);
    Up(0.0, 0.0);
    EXPECT_TRUE(document.UndoTitles().empty()); // dragged nowhere
}

TEST_F(OverlayOperator, ViewProvidesSizesAspectAndZoom) {
    view.AspectX = 2.0;
    view.DisplayWidth = 1600.0;
    view.DisplayHeight = 400.0;
    Draw();
    EXPECT_EQ(core.AspectX, 2.0f);
    EXPECT_EQ(core.Zoom, 2.0f);
    view.AspectX = view.AspectY = view.DisplayWidth = 0.0;
    Draw();
    EXPECT_EQ(core.AspectX, 1.0f);
    EXPECT_EQ(core.AspectY, 1.0f);
    EXPECT_EQ(core.Zoom, 1.0f);

    Key(1.0);
    document.CurrentTime = 2.0;
    Draw();
    EXPECT_FLOAT_EQ(core.Cross.HandleX, 80.0f); // with the values of the document's time
}

TEST_F(OverlayOperator, BareViewsAndViewsWithoutAPictureShowNoWidgets) {
    const int drawings = core.Draws;
    view.Mode = host::PreviewInfo::kModeBare;
    Draw();
    view.Mode = 0;
    view.ImageWidth = 0;
    Draw();
    EXPECT_EQ(core.Draws, drawings);
    EXPECT_EQ(Down(0.5, 0.5), host::kDragNone);
    EXPECT_TRUE(core.Events.empty());
}

TEST_F(OverlayOperator, ChangeOfALinkedInputAsksTheViewsToRedraw) {
    BlindView second;
    tool.AddControls(&second, nullptr);
    const int wanted = Control()->RedrawsWanted;
    tool.FindInput("Othe")->SetSource(host::AutoNumber(1.0).get(), 0.0, 1, nullptr);
    EXPECT_EQ(Control()->RedrawsWanted, wanted);
    for (const char* id : {"Cent", "High"}) tool.NotifyChanged(tool.FindInput(id), nullptr, 0.0, nullptr);
    EXPECT_EQ(Control()->RedrawsWanted, wanted + 2);
    EXPECT_EQ(tool.Controls.Entries.at(1)->RedrawsWanted, 2);
}

TEST_F(OverlayOperator, FindsTheInputUnderThePointer) {
    const auto inputAt = [&](double x, double y) {
        const host::Input* input =
            tool.ControlCommand(Control(), PointTo(x, y), host::FuID("CCMD_GetInputAt"), nullptr, nullptr);
        return input ? input->Id() : "";
    };
    EXPECT_EQ(inputAt(0.5, 0.5), "Cent");
    EXPECT_EQ(inputAt(0.05, 0.05), "Wide");
    EXPECT_EQ(inputAt(0.1, 0.05), "Wide");
    EXPECT_EQ(inputAt(0.15, 0.05), "High");
    EXPECT_EQ(inputAt(0.8, 0.8), "");
    EXPECT_EQ(tool.ControlCommand(Control(), PointTo(0.5, 0.5), host::FuID("CCMD_Other"), nullptr, nullptr),
              nullptr);
}

TEST_F(OverlayOperator, AFrameInProgressKeepsItsValues) {
    StillClip clip(HostPicture(4, 3, [](int, int, int) { return 1000; }));
    tool.FindInput("Clip")->Connect(&clip);
    core.OnProcess = [&] {
        Down(0.5, 0.5);
        Move(0.25, 0.75);
        Up(0.25, 0.75);
        EXPECT_EQ(core.Centre.Value.x, 0.5);
        EXPECT_FLOAT_EQ(core.Cross.HandleX, 100.0f) << "the widget follows the pointer at once";
        EXPECT_EQ(centre.GetCurve().Constant, (host::Curve::Value{0.25, 0.75}));
    };
    host::Request request(0.0);
    tool.Process(&request);
    EXPECT_EQ(core.Centre.Value.x, 0.25);
}

} // namespace
} // namespace k7::test
