#include "host/Preview.h"
#include "tests/tools/Stage.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace k7::test {
namespace {

/// A view without a picture behind it: drawing there has no effect.
class BlindView : public host::PreviewInfo {
public:
    BlindView() {
        ImageWidth = 65;
        ImageHeight = 63;
        DisplayWidth = DisplayHeight = 10.0; // so small that most presses hit a handle
    }
    double TransformXOut(double x) const override { return x; }
    double TransformYOut(double y) const override { return y; }
    void Color4ub(int, int, int, int) override {}
};

/// What a user does in a window with one tool: drags its widgets and moves its sliders.
class Window {
public:
    explicit Window(Stage& stage) : stage_(stage) { stage_.op->AddControls(&view_, nullptr); }

    void Drag(double from, double to) {
        if (stage_.op->Controls.Entries.empty()) return;
        host::OperatorControl* control = stage_.op->Controls.Entries.at(0).get();
        stage_.op->GLDrawControls(control, &view_, nullptr);
        view_.PointerX = view_.PointerY = from;
        stage_.op->ControlDown(control, &view_, nullptr, nullptr);
        view_.PointerX = view_.PointerY = to;
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

} // namespace
} // namespace k7::test
