#include "tests/tools/Stage.h"

#include <gtest/gtest.h>

namespace k7::test {
namespace {

/// A dark clip with a bright box of 20 x 10 pixels at (frame x 8, 30), 100 pixels wide and 80 high.
class BoxClip : public host::ImageProvider {
public:
    explicit BoxClip(int bottom = 30) : bottom_(bottom) {}

    host::Image* ImageAt(double time) override {
        host::Image* image = host::Image::Make(100, 80, host::Depth::Int16);
        const int left = static_cast<int>(time) * 8;
        for (int y = 0; y < image->Height; ++y)
            for (int x = 0; x < image->Width; ++x) {
                const bool inside = x >= left && x < left + 20 && y >= bottom_ && y < bottom_ + 10;
                const int word = inside ? 60000 : 500;
                const host::Pixel pixel{word, word, word, 65535};
                const host::Image::Plane& plane = image->PlaneAccess[0];
                image->Write(&pixel, plane.Row(y) + x * plane.Step, nullptr);
            }
        return image;
    }

private:
    const int bottom_;
};

/// MoBlur over a clip of four frames that finds its own region.
struct MoBlurTool {
    MoBlurTool() : stage(Entry(), clip) {
        stage.op->SetExtent({0.0, 4.0, 1.0});
        stage.Write(At("Aund"), 1.0);
    }
    static const host::Registry& Entry() {
        for (const host::Registry* tool : Tools())
            if (tool->GetAttrS(host::kTagRegName) == "K7MoBlur") return *tool;
        throw std::runtime_error("MoBlur is not registered");
    }
    host::Input& At(const char* id) { return *stage.op->FindInput(id); }
    /// The middle of the region, in rows of the clip.
    double MiddleRow() { return At("Cere").GetCurve().Constant.y * 80.0; }

    BoxClip clip;
    Stage stage;
};

TEST(MoBlurTool, WritesTheRegionThatItHasFound) {
    MoBlurTool tool;
    tool.stage.Render(2.0); // boxes at columns 8 to 27 and 16 to 35
    EXPECT_FLOAT_EQ(static_cast<float>(tool.At("Cere").GetCurve().Constant.x), 0.215f);
    EXPECT_FLOAT_EQ(static_cast<float>(tool.MiddleRow()), 34.5f);
    EXPECT_FLOAT_EQ(static_cast<float>(tool.At("XSle").GetCurve().Constant.x), 0.27f);
    EXPECT_FLOAT_EQ(static_cast<float>(tool.At("YSle").GetCurve().Constant.x), 0.09f);
}

TEST(MoBlurTool, AMatteReplacesTheBoundWhileConnected) {
    MoBlurTool tool;
    BoxClip matte(60);
    tool.stage.Render(1.0);
    EXPECT_FLOAT_EQ(static_cast<float>(tool.MiddleRow()), 34.5f);
    tool.At("Matte").Connect(&matte);
    tool.stage.Render(1.0);
    EXPECT_FLOAT_EQ(static_cast<float>(tool.MiddleRow()), 64.5f);
    tool.At("Matte").Connect(nullptr);
    tool.stage.Render(1.0);
    EXPECT_FLOAT_EQ(static_cast<float>(tool.MiddleRow()), 34.5f);
}

TEST(MoBlurTool, AutoKeyKeysAnimatedControlsFrameByFrame) {
    MoBlurTool tool;
    tool.At("XSle").SetCurve({{0.5, 0.0}, {{0.0, {0.5, 0.0}}}});
    tool.stage.Render(1.0);
    EXPECT_EQ(tool.At("XSle").GetCurve().Keys.size(), 1u);
    tool.stage.Write(tool.At("Auey"), 1.0);
    for (double time : {1.0, 2.0, 3.0}) tool.stage.Render(time);
    const host::Curve scale = tool.At("XSle").GetCurve();
    ASSERT_EQ(scale.Keys.size(), 4u);
    for (double time : {1.0, 2.0, 3.0}) EXPECT_FLOAT_EQ(static_cast<float>(scale.Keys.at(time).x), 0.27f);
    EXPECT_FALSE(tool.At("YSle").GetCurve().Animated());
}

TEST(MoBlurTool, SwitchesSteerOtherControls) {
    MoBlurTool tool;
    EXPECT_EQ(tool.At("ABsh").GetAttrI(host::kTagShown), 1);
    EXPECT_EQ(tool.At("Auey").GetAttrI(host::kTagDisabled), 0);
    EXPECT_EQ(tool.At("Auey").GetAttrI(host::kTagShown), 1);
    tool.stage.Write(tool.At("Aund"), 0.0);
    EXPECT_EQ(tool.At("ABsh").GetAttrI(host::kTagShown), 0);
    EXPECT_EQ(tool.At("Auey").GetAttrI(host::kTagDisabled), 1);
    EXPECT_EQ(tool.At("Auey").GetAttrI(host::kTagShown), 0);
    for (const double on : {1.0, 0.0}) {
        tool.stage.Write(tool.At("Prss"), on);
        EXPECT_EQ(tool.At("Sers").GetAttrI(host::kTagShown), on);
    }

    tool.stage.Write(tool.At("Maes"), 1.0);
    EXPECT_EQ(tool.At("YSle").GetAttrI(host::kTagShown), 0);
    tool.stage.Write(tool.At("Aund"), 1.0); // a bound of its own shape needs both scales
    EXPECT_EQ(tool.At("Maes").GetCurve().Constant.x, 0.0);
    EXPECT_EQ(tool.At("YSle").GetAttrI(host::kTagShown), 1);
}

} // namespace
} // namespace k7::test
