#include "tests/ofx/Viewport.h"

namespace k7::test::ofx {
namespace {

// Places on the picture, of 61 x 43 pixels: widgets move by whole ones.
constexpr double kX1 = 24.0 / 61.0, kY1 = 26.0 / 43.0, kX2 = 15.0 / 61.0, kY2 = 32.0 / 43.0;

TEST(OfxOverlay, ExistsIfAToolHasWidgets) {
    Opened opened;
    for (PluginStruct* plugin : Plugins()) {
        const std::string name = std::string(plugin->identifier).substr(11);
        const std::set<std::string> with = {"CrashZoom", "DBlur", "Flare", "Flare2", "FlareSpot", "MoBlur"};
        Scene scene(opened, plugin);
        ASSERT_EQ(kOk, scene.Create());
        {
            Viewport view(opened, plugin, scene);
            EXPECT_EQ(with.count(name) == 1, view.HasControls()) << name;
            if (view.HasControls()) {
                EXPECT_EQ(kOk, view.Event("Draw"));
                EXPECT_EQ(kReplyDefault, view.Event("KeyDown"));
            }
        }
        scene.Destroy();
    }
}

TEST(OfxOverlay, ADragWritesAsItGoesAndIsOneStep) {
    Opened opened;
    for (const int offset : {0, -17}) {
        PluginStruct* plugin = FindPlugin("CrashZoom");
        Scene scene(opened, plugin, {.x = offset, .y = 2 * offset});
        ASSERT_EQ(kOk, scene.Create());
        {
            Viewport view(opened, plugin, scene);
            ASSERT_EQ(kOk, view.Event("Draw"));
            EXPECT_EQ(kOk, view.Event("PenDown", 0.5, 0.5));
            EXPECT_EQ(kOk, view.Event("PenMotion", kX1, kY1));
            EXPECT_NEAR(kX1, scene["Cntr"].value.real[0], 1e-5);
            EXPECT_EQ(kOk, view.Event("PenMotion", kX2, kY2));
            EXPECT_EQ(kOk, view.Event("PenUp", kX2, kY2));
            EXPECT_NEAR(kX2, scene["Cntr"].value.real[0], 1e-5);
            EXPECT_NEAR(kY2, scene["Cntr"].value.real[1], 1e-5);
            EXPECT_EQ(1u, scene.effect.undoSteps.size());
            EXPECT_EQ(0, scene.effect.editDepth);
            EXPECT_GT(view.interact.redraws, 0);
            EXPECT_EQ(kReplyDefault, view.Event("PenMotion", 0.6, 0.6)); // the button is up
        }
        scene.Destroy();
    }
}

TEST(OfxOverlay, OnlyWhatHitsAWidgetIsTaken) {
    Opened opened;
    PluginStruct* plugin = FindPlugin("CrashZoom");
    Scene scene(opened, plugin);
    ASSERT_EQ(kOk, scene.Create());
    {
        Viewport view(opened, plugin, scene);
        EXPECT_EQ(kReplyDefault, view.Event("PenDown", 0.5, 0.5)); // nothing has been drawn yet
        ASSERT_EQ(kOk, view.Event("Draw"));
        for (const char* event : {"PenDown", "PenMotion", "PenUp"})
            EXPECT_EQ(kReplyDefault, view.Event(event, 0.02, 0.97));
        view.pixelScale = 2.0; // zoomed out: the same handle covers more of the picture
        ASSERT_EQ(kOk, view.Event("Draw"));
        EXPECT_EQ(kOk, view.Event("PenDown", 0.5 + 8.0 / 61.0, 0.5));
        EXPECT_EQ(kOk, view.Event("PenUp", 0.5, 0.5));
    }
    scene.Destroy();
}

TEST(OfxOverlay, AnInterruptedDragLeavesNoStepOpen) {
    Opened opened;
    PluginStruct* plugin = FindPlugin("CrashZoom");
    Scene scene(opened, plugin);
    ASSERT_EQ(kOk, scene.Create());
    {
        Viewport view(opened, plugin, scene);
        ASSERT_EQ(kOk, view.Event("Draw"));
        EXPECT_EQ(kOk, view.Event("PenDown", 0.5, 0.5));
        EXPECT_EQ(kOk, view.Event("PenMotion", kX1, kY1));
    }
    EXPECT_EQ(0, scene.effect.editDepth);
    scene.Destroy();
}

TEST(OfxOverlay, AKeyIsSetAtTheTimeOfTheView) {
    Opened opened;
    PluginStruct* plugin = FindPlugin("CrashZoom");
    Scene scene(opened, plugin);
    scene["Cntr"].keys[0.0].real = {0.5, 0.5};
    ASSERT_EQ(kOk, scene.Create());
    {
        Viewport view(opened, plugin, scene);
        ASSERT_EQ(kOk, view.Event("Draw", 0, 0, 9.0));
        EXPECT_EQ(kOk, view.Event("PenDown", 0.5, 0.5, 9.0));
        EXPECT_EQ(kOk, view.Event("PenMotion", kX2, 0.5, 9.0));
        EXPECT_EQ(kOk, view.Event("PenUp", kX2, 0.5, 9.0));
    }
    EXPECT_NEAR(0.5, scene["Cntr"].At(8.0).real[0], 1e-5);
    EXPECT_NEAR(kX2, scene["Cntr"].At(9.0).real[0], 1e-5);
    scene.Destroy();
}

} // namespace
} // namespace k7::test::ofx
