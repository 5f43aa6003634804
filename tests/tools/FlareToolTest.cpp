#include "tests/tools/Stage.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace k7::test {
namespace {

/// A flare over a clip of noise, as the compositor holds it.
struct FlareTool {
    explicit FlareTool(const std::string& name) : stage(Entry(name), clip) {}

    static const host::Registry& Entry(const std::string& name) {
        for (const host::Registry* tool : Tools())
            if (tool->GetAttrS(host::kTagRegName) == name) return *tool;
        throw std::runtime_error(name + " is not registered");
    }
    host::Input& At(const char* id) { return *stage.op->FindInput(id); }
    double Value(const char* id) { return At(id).GetCurve().Constant.x; }
    bool Shown(const char* id) {
        return !At(id).HasAttr(host::kTagShown) || At(id).GetAttrI(host::kTagShown);
    }
    void Set(const char* id, double value) { stage.Write(At(id), value); }

    NoiseClip clip{65, 63};
    Stage stage;
};

TEST(FlareTool, SwatchAndLevelFollowEachOtherWithoutLooping) {
    FlareTool tool("K7Flare");
    tool.Set("LoLi", 60.0);
    ASSERT_FALSE(tool.stage.Render().empty()); // a swatch follows the value of the last frame
    tool.Set("LoLi", 60.0);
    for (const char* id : {"LooR", "LooG", "LooB"}) EXPECT_NEAR(tool.Value(id), 0.6, 1e-4);
    EXPECT_EQ(tool.Value("LoLi"), 60.0) << "its own echo does not write to it";

    for (const char* id : {"HioR", "HioG", "HioB"}) tool.At(id).SetCurve({{0.5, 0.0}, {}});
    ASSERT_FALSE(tool.stage.Render().empty());
    tool.Set("HioG", 0.5);
    EXPECT_NEAR(tool.Value("HiLi"), tool.Value("HioG") * 100.0, 1e-3);
    EXPECT_EQ(tool.Value("HioR"), tool.Value("HioB"));
}

TEST(FlareTool, LightMapOnlyHidesAndShowsTheFlaresControls) {
    FlareTool tool("K7Flare");
    tool.Set("LMOn", 1.0);
    EXPECT_FALSE(tool.Shown("Aper"));
    tool.Set("LMOn", 0.0);
    for (const char* id : {"Aper", "Stre", "GloR", "Refs"}) EXPECT_TRUE(tool.Shown(id)) << id;
    EXPECT_FALSE(tool.Shown("Refy"));
    tool.Set("Refs", 2.0);
    EXPECT_TRUE(tool.Shown("Refy"));
    EXPECT_FALSE(tool.Shown("YSca"));
    tool.Set("Mtch", 0.0);
    EXPECT_TRUE(tool.Shown("YSca"));
    tool.Set("LMOn", 1.0);
    EXPECT_FALSE(tool.Shown("Aper"));
}

TEST(FlareTool, LightMapOfAnotherSizeIsFittedToTheBackground) {
    for (const char* name : {"K7Flare", "K7Flare2"}) {
        FlareTool tool(name);
        NoiseClip lights(20, 90);
        tool.At(name == std::string("K7Flare") ? "Light Map" : "Light Colours").Connect(&lights);
        tool.Set(name == std::string("K7Flare") ? "LMOn" : "ColT",
                 name == std::string("K7Flare") ? 0.0 : 1.0);
        const std::vector<float> words = tool.stage.Render();
        EXPECT_EQ(words.size(), 65u * 63u * 4u);
        EXPECT_EQ(tool.stage.Render(), words);
        for (int threads : {3, 16}) {
            const Processors processors(threads);
            EXPECT_EQ(tool.stage.Render(), words) << name << " on " << threads;
        }
    }
}

TEST(FlareSpotTool, OverrideSetDuringAFrameShowsTheColours) {
    FlareTool tool("K7FlareSpot");
    tool.Set("Lens", 4.0); // the user's, whose file is missing: the frame reports it while it is in progress
    host::GetApp()->SetMessageListener([&](const host::Operator&, const std::string&) {
        EXPECT_FALSE(tool.Shown("CouR"));
        tool.Set("ClOv", 1.0);
        EXPECT_TRUE(tool.Shown("CouR"));
        EXPECT_TRUE(tool.Shown("OvuR"));
    });
    EXPECT_FALSE(tool.stage.Render().empty());
    host::GetApp()->SetMessageListener(nullptr);
    EXPECT_TRUE(tool.Shown("CouR"));
}

TEST(Flare2Tool, StylesWriteTheirRowsAndStayWhenASliderMoves) {
    FlareTool tool("K7Flare2");
    tool.Set("RTyp", 1.0);
    EXPECT_EQ(tool.Value("Refs"), 5.0);
    EXPECT_EQ(tool.Value("Refy"), 50.0);
    EXPECT_EQ(tool.Value("RSca"), 1.0);
    EXPECT_TRUE(tool.Shown("XYRf")) << "the written number of ghosts has its own reaction";

    tool.Set("STyp", 2.0);
    EXPECT_EQ(tool.Value("Stks"), 300.0);
    tool.Set("Stks", 12.0);
    EXPECT_EQ(tool.Value("Stks"), 12.0);
    EXPECT_EQ(tool.Value("STyp"), 2.0);

    tool.Set("RTyp", 0.0);
    EXPECT_EQ(tool.Value("Refs"), 0.0);
    EXPECT_EQ(tool.Value("Refy"), 50.0);
    EXPECT_FALSE(tool.Shown("XYRf"));
}

} // namespace
} // namespace k7::test
