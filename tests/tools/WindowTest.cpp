#include "host/Preview.h"
#include "tests/tools/Stage.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>
#include <thread>

namespace k7::test {
namespace {

/// A view without a picture behind it: drawing there has no effect.
class BlindView : public host::PreviewInfo {
public:
    BlindView() {
        ImageWidth = 65;
        ImageHeight = 63;
    }
    double TransformXOut(double x) const override { return x; }
    double TransformYOut(double y) const override { return y; }
    void Color4ub(int, int, int, int) override {}
};

/// What a user does in a window with one tool: drags its widgets and moves its sliders.
class Window {
public:
    /// At `size` pixels most presses hit a handle.
    explicit Window(Stage& stage, double size = 10.0) : stage_(stage) {
        view_.DisplayWidth = view_.DisplayHeight = size;
        stage_.op->AddControls(&view_, nullptr);
    }

    void Drag(double from, double to) { Drag(from, from, to, to); }

    void Drag(double fromX, double fromY, double toX, double toY) {
        if (stage_.op->Controls.Entries.empty()) return;
        host::OperatorControl* control = stage_.op->Controls.Entries.at(0).get();
        stage_.op->GLDrawControls(control, &view_, nullptr);
        view_.PointerX = fromX;
        view_.PointerY = fromY;
        stage_.op->ControlDown(control, &view_, nullptr, nullptr);
        view_.PointerX = toX;
        view_.PointerY = toY;
        stage_.op->ControlMove(control, &view_, nullptr, nullptr);
        stage_.op->ControlUp(control, &view_, nullptr, nullptr);
    }

    /// Sets each of the tool's controls to its current value.
    void Touch() {
        for (host::Input* input : stage_.Settings()) {
            const host::Ref<host::Parameter> value(input->GetSource(3.0));
            input->SetSource(value.get(), 3.0, 1, nullptr);
        }
    }

private:
    Stage& stage_;
    BlindView view_;
};

struct ToolInWindow : testing::TestWithParam<host::Registry*> {};

INSTANTIATE_TEST_SUITE_P(Registry, ToolInWindow, testing::ValuesIn(Tools()),
                         [](const auto& of) { return of.param->GetAttrS(host::kTagRegName); });

TEST_P(ToolInWindow, CanBeDraggedWhileRenderingWithTheSameResult) {
    const Processors processors(2);
    NoiseClip clip(65, 63);
    Stage stage(*GetParam(), clip);
    const std::vector<float> alone = stage.Render(); // random numbers drawn at the first frame are kept
    Window window(stage);
    std::vector<std::pair<host::Input*, host::Curve>> before;
    for (host::Input* input : stage.Settings()) before.emplace_back(input, input->GetCurve());

    std::atomic<int> frames = 0;
    std::thread renderer([&] {
        for (; frames < 12; ++frames) EXPECT_FALSE(stage.Render().empty());
    });
    do {
        for (double to : {0.3, 0.6}) window.Drag(0.5, to);
        window.Touch();
    } while (frames < 12);
    renderer.join();

    stage.document.Silent = true; // style lists do not write their sliders again
    for (const auto& [input, curve] : before) input->SetCurve(curve);
    EXPECT_EQ(stage.Render(), alone);
}

/// The inputs that belong to a tool's widgets, and which of them its handles change.
struct Handles {
    const char* tool;
    std::set<std::string> inputs;
    std::set<std::string> changed;
};

TEST(Widgets, ChangeTheInputsThatTheyShowByAsMuchAsTheyAreDragged) {
    const Handles tools[] = {
        {"K7.CrashZoom", {"Cntr", "DimX"}, {"Cntr ", "DimX "}},
        {"K7.DBlur", {"Angl"}, {"Angl "}},
        {"K7.Flare", {"Cent", "XSca", "YSca"}, {"Cent ", "XSca ", "XSca YSca ", "YSca "}},
        {"K7.Flare2", {"XYSr", "XYRf"}, {"XYRf ", "XYSr "}},
        {"K7.FlareSpot", {"Imag", "Srce"}, {"Imag ", "Srce ", "Srce Imag "}},
        {"K7.MoBlur", {"Cere", "XSle", "YSle"}, {"Cere ", "XSle ", "XSle YSle ", "YSle "}},
    };
    constexpr int steps = 40;
    constexpr double right = 0.1, up = 0.06, pixel = 1.0 / 60; // a pointer stands on a pixel
    for (const Handles& handles : tools) {
        SCOPED_TRACE(handles.tool);
        NoiseClip clip(65, 63);
        Stage stage(*host::ClassRegistry().Find(host::FuID(handles.tool)), clip);
        if (host::Input* reflections = stage.op->FindInput("Refs")) stage.Write(*reflections, 3.0);
        stage.Render(); // reads also what only frames read
        Window window(stage, 600.0);
        std::vector<std::pair<host::Input*, host::Curve>> before;
        for (host::Input* input : stage.Settings()) before.emplace_back(input, input->GetCurve());

        std::set<std::string> found;
        for (int i = 0; i < steps * steps; ++i) {
            const double x = i % steps / double{steps}, y = i / steps / double{steps};
            window.Drag(x, y, x + right, y + up);
            std::string changed;
            for (const auto& [input, curve] : before) {
                const host::Curve now = input->GetCurve();
                if (now == curve || !handles.inputs.contains(input->Id())) continue;
                changed += input->Id() + " ";
                if (input->DataType() != host::Input::Type::Point) continue;
                EXPECT_NEAR(now.Constant.x, curve.Constant.x + right, pixel) << changed;
                EXPECT_NEAR(now.Constant.y, curve.Constant.y + up, pixel) << changed;
            }
            if (!changed.empty()) found.insert(changed);
            stage.document.Silent = true; // no reactions
            for (const auto& [input, curve] : before) input->SetCurve(curve);
            stage.document.Silent = false;
        }
        EXPECT_EQ(found, handles.changed);
    }
}

} // namespace
} // namespace k7::test
