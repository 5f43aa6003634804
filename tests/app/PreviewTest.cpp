#include "tests/app/ProgramStage.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <vector>

// k7 preview: the visible widgets, and drags from the pointer to the next frame.

namespace app::test {
namespace {

using nlohmann::json;

struct Colour {
    int red, green, blue;
    bool operator==(const Colour&) const = default;
};
constexpr Colour kGrey = {51, 51, 51};
constexpr Colour kWhite = {255, 255, 255};
constexpr Colour kYellow = {255, 255, 0};
constexpr Colour kRed = {255, 0, 0};

class Preview : public Program {
protected:
    /// Runs `k7 preview` and returns its --json output.
    json Show(Arguments arguments, int code = 0) {
        arguments.insert(arguments.begin(), "preview");
        arguments.push_back("--json");
        EXPECT_EQ(Run(arguments), code);
        return code == 0 ? json::parse(Out()) : json();
    }

    void PutGrey(int width, int height) {
        Put("in.png", MakePicture(width, height, [](int, int) {
                return host::Pixel{0x3333, 0x3333, 0x3333, 0xffff};
            }));
    }

    /// A pixel in 8 bits.
    static Colour ColourAt(const host::Image& image, int x, int y) {
        const host::Pixel pixel = At(image, x, y);
        return {pixel.Red >> 8, pixel.Green >> 8, pixel.Blue >> 8};
    }

    /// Whether there is a stroke of a colour at a distance from a point, or one pixel beside it.
    static bool Sees(const host::Image& image, Colour colour, double x, double y, double degrees = 0.0,
                     double distance = 0.0) {
        const int column = static_cast<int>(x + distance * std::cos(degrees * M_PI / 180.0)),
                  row = static_cast<int>(y + distance * std::sin(degrees * M_PI / 180.0));
        for (int v = row - 1; v <= row + 1; ++v)
            for (int u = column - 1; u <= column + 1; ++u)
                if (ColourAt(image, u, v) == colour) return true;
        return false;
    }
};

TEST_F(Preview, WidgetsKeepTheirStrokesAndBoxesAtEveryZoom) {
    PutGrey(200, 160);
    for (int zoom : {1, 2, 4}) { // halves
        const std::string size = std::to_string(100 * zoom) + "x" + std::to_string(80 * zoom);
        Show({"CrashZoom", "-i", "in.png", "-o", "out.png", "-s", "DimX=0.6", "-s", "Cntr=0.4,0.5", "--size",
              size.c_str()});
        const auto image = Get("out.png").image;
        ASSERT_TRUE(image->Width == 100 * zoom && image->Height == 80 * zoom);
        const double x = 40.0 * zoom, y = 40.0 * zoom, radius = 30.0 * zoom;
        EXPECT_EQ(ColourAt(*image, 40 * zoom, 40 * zoom), kGrey) << "within the box";
        for (double degrees : {0.0, 90.0, 180.0, 270.0}) {
            SCOPED_TRACE(degrees);
            const auto seen = [&](Colour colour, double at) {
                return Sees(*image, colour, x, y, degrees, at);
            };
            EXPECT_TRUE(seen(kWhite, 4.0) && !seen(kWhite, 7.0));
            EXPECT_TRUE(Sees(*image, kYellow, x + radius, y, degrees, 4.0)); // the box on the circle
            if (degrees == 0.0) continue;
            EXPECT_TRUE(seen(kYellow, radius) && !seen(kYellow, radius - 3.0) &&
                        !seen(kYellow, radius + 3.0));
            for (double arm = 10.0; arm <= 25.0; arm += 0.5) EXPECT_TRUE(seen(kWhite, arm));
            EXPECT_FALSE(seen(kWhite, 28.0));
        }
        EXPECT_FALSE(Sees(*image, kYellow, x + radius + 7.0, y));
    }
}

TEST_F(Preview, HandOfAnAngleIsDraggedOnWidePixels) {
    PutGrey(100, 160);
    const json drags = Show({"DBlur", "-i", "in.png", "-o", "out.png", "-s", "Angl=90", "--aspect", "2:1",
                             "--drag", "0.5,0.75:0.6,0.716506"});
    EXPECT_EQ(drags[0]["changed"][0]["id"], "Angl");
    EXPECT_NEAR(drags[0]["changed"][0]["value"], 60.0, 0.5); // the pointer is on whole pixels
    EXPECT_EQ(drags[0]["undo"], "K7DBlur: Angle");
    const json high =
        Show({"DBlur", "-i", "in.png", "-o", "high.png", "--aspect", "1:2", "--drag", "0.7,0.5:0.9,0.625"});
    EXPECT_NEAR(high[0]["changed"][0]["value"], 45.0, 1e-3); // 40 columns, and 20 rows of double height
    const auto image = Get("out.png").image;
    ASSERT_TRUE(image->Width == 200 && image->Height == 160); // wide pixels are shown wide
    // In the view the hand has its true angle: a fifth of the width long. The box at its end is square in
    // pixels of the picture, which are twice as wide as high.
    for (double at = 0.0; at <= 40.0; at += 0.5) EXPECT_TRUE(Sees(*image, kRed, 100, 80, 60.0, at)) << at;
    const double x = 100 + 40 * std::cos(M_PI / 3), y = 80 + 40 * std::sin(M_PI / 3);
    for (double side : {-1.0, 1.0}) {
        EXPECT_TRUE(Sees(*image, kRed, x + side * 8.0, y) && Sees(*image, kRed, x, y + side * 4.0));
        EXPECT_FALSE(Sees(*image, kRed, x + side * 11.0, y));
    }
    EXPECT_FALSE(Sees(*image, kRed, x, y + 7.0));
}

TEST_F(Preview, PictureIsFittedIntoTheView) {
    PutGrey(100, 50);
    Show({"Clean", "-i", "in.png", "-o", "out.png", "--size", "100x100"});
    const auto image = Get("out.png").image;
    EXPECT_EQ(ColourAt(*image, 50, 10), (Colour{0, 0, 0}));
    EXPECT_EQ(ColourAt(*image, 50, 25), kGrey);
    EXPECT_EQ(ColourAt(*image, 50, 74), kGrey);
    EXPECT_EQ(ColourAt(*image, 50, 75), (Colour{0, 0, 0}));
}

TEST_F(Preview, EdgeOfTheClearCircleSetsItsSize) {
    Put("in.png", MakeNoise(200, 100));
    const json drags =
        Show({"CrashZoom", "-i", "in.png", "-o", "out.png", "-s", "Spee=60", "--drag", "0.7,0.5:0.8,0.5"});
    ASSERT_EQ(drags.size(), 1u);
    EXPECT_EQ(drags[0]["hit"], true);
    ASSERT_EQ(drags[0]["changed"].size(), 1u);
    EXPECT_EQ(drags[0]["changed"][0]["id"], "DimX");
    EXPECT_NEAR(drags[0]["changed"][0]["value"], 0.6, 1e-6); // twice the distance from the centre
    EXPECT_EQ(drags[0]["undo"], "K7CrashZoom: Clear Radius");

    // The next frame is the one of that value.
    Show({"CrashZoom", "-i", "in.png", "-o", "typed.png", "-s", "Spee=60", "-s", "DimX=0.6000000238418579"});
    Show({"CrashZoom", "-i", "in.png", "-o", "before.png", "-s", "Spee=60"});
    EXPECT_TRUE(folder_.Get("out.png") == folder_.Get("typed.png"));
    EXPECT_FALSE(folder_.Get("out.png") == folder_.Get("before.png"));
}

TEST_F(Preview, CentreIsDraggedWithItsCircleWhoseSizeEndsWithTheDisplayedRange) {
    PutGrey(200, 100);
    const json drags = Show({"CrashZoom", "-i", "in.png", "-o", "out.png", "--drag", "0.5,0.5:0.25,0.8",
                             "--drag", "0.45,0.8:0.4,0.8", "--drag", "0.4,0.8:8,0.8"});
    EXPECT_EQ(drags[0]["changed"][0]["id"], "Cntr");
    EXPECT_NEAR(drags[0]["changed"][0]["value"][0], 0.25, 1e-6);
    EXPECT_NEAR(drags[0]["changed"][0]["value"][1], 0.8, 1e-6);
    EXPECT_EQ(drags[0]["undo"], "K7CrashZoom: Centre");
    EXPECT_EQ(drags[1]["changed"][0]["id"], "DimX");
    EXPECT_NEAR(drags[1]["changed"][0]["value"], 0.3, 1e-6);
    EXPECT_EQ(drags[2]["changed"][0]["value"], 10.0);
}

TEST_F(Preview, DraggingNothingChangesNothing) {
    Put("in.png", MakeNoise(200, 100));
    for (const char* tool : {"DBlur", "Clean"}) {
        Show({tool, "-i", "in.png", "-o", "still.png"});
        const json drags = Show({tool, "-i", "in.png", "-o", "out.png", "--drag", "0.1,0.9:0.8,0.2", "--drag",
                                 "0.7,0.5:0.7,0.5"});
        EXPECT_EQ(drags[0]["hit"], false) << tool;
        EXPECT_EQ(drags[1]["hit"], tool == std::string("DBlur")); // the hand, dragged nowhere
        for (const json& drag : drags) EXPECT_TRUE(drag["changed"].empty() && drag["undo"].is_null());
        EXPECT_TRUE(folder_.Get("out.png") == folder_.Get("still.png"));
    }
}

TEST_F(Preview, SaysWhatIsWrongWithTheCommand) {
    PutGrey(20, 10);
    const struct {
        std::string option, value;
    } cases[] = {{"--size", "0x100"},     {"--size", "100"},         {"--size", "99999x10"},
                 {"--drag", "0.5,0.5"},   {"--drag", "0.5:0.6,0.5"}, {"--drag", "a,b:c,d"},
                 {"--drag", "0,0:nan,0"}, {"--aspect", "0:1"}};
    for (const auto& wrong : cases) {
        Show({"DBlur", "-i", "in.png", "-o", "out.png", wrong.option.c_str(), wrong.value.c_str()}, 2);
        EXPECT_NE(Err().find("'" + wrong.value + "'"), std::string::npos) << Err();
    }
    Show({"DBlur", "-i", "none.png", "-o", "out.png"}, 1);
    EXPECT_NE(Err().find("none.png"), std::string::npos) << Err();
    EXPECT_FALSE(folder_.Has("out.png"));
}

} // namespace
} // namespace app::test
