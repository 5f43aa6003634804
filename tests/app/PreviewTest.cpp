#include "tests/app/ProgramStage.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <vector>

// k7 preview: the widgets as they are seen, and drags from the pointer to the next frame.

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

/// A stroke in pixels of the view.
struct Stroke {
    double x1, y1, x2, y2;
    double DistanceTo(double x, double y) const {
        const double dx = x2 - x1, dy = y2 - y1;
        const double t = std::clamp(((x - x1) * dx + (y - y1) * dy) / (dx * dx + dy * dy), 0.0, 1.0);
        return std::hypot(x - (x1 + t * dx), y - (y1 + t * dy));
    }
};
using Strokes = std::vector<Stroke>;

void AddBox(Strokes& strokes, double x, double y, double halfWidth = 4.0) {
    const double left = x - halfWidth, right = x + halfWidth, bottom = y - 4.0, top = y + 4.0;
    strokes.push_back({left, bottom, right, bottom});
    strokes.push_back({right, bottom, right, top});
    strokes.push_back({right, top, left, top});
    strokes.push_back({left, top, left, bottom});
}
void AddCross(Strokes& strokes, double x, double y) {
    strokes.push_back({x - 25.0, y, x - 10.0, y});
    strokes.push_back({x + 10.0, y, x + 25.0, y});
    strokes.push_back({x, y - 25.0, x, y - 10.0});
    strokes.push_back({x, y + 10.0, x, y + 25.0});
}
void AddCircle(Strokes& strokes, double x, double y, double radius) {
    constexpr int pieces = 720;
    const auto at = [&](int i) {
        const double angle = 2.0 * M_PI * i / pieces;
        return std::pair{x + radius * std::cos(angle), y + radius * std::sin(angle)};
    };
    for (int i = 0; i < pieces; ++i)
        strokes.push_back({at(i).first, at(i).second, at(i + 1).first, at(i + 1).second});
}

double DistanceTo(const Strokes& strokes, double x, double y) {
    double least = 1e9;
    for (const Stroke& stroke : strokes) least = std::min(least, stroke.DistanceTo(x, y));
    return least;
}

class Preview : public Program {
protected:
    /// Carries out `k7 preview` and gives what --json tells.
    json Show(Arguments arguments, int code = 0) {
        arguments.insert(arguments.begin(), "preview");
        arguments.push_back("--json");
        EXPECT_EQ(Run(arguments), code);
        return code == 0 ? json::parse(Out()) : json();
    }

    void PutGrey(int width, int height) {
        PutPicture("in.png", width, height, [](int, int) {
            return host::Pixel{0x3333, 0x3333, 0x3333, 0xffff};
        });
    }
    void PutChecks(int width, int height) {
        PutPicture("in.png", width, height, [](int x, int y) {
            const int word = (x / 3 + y / 5) % 2 * 60000;
            return host::Pixel{word, word, word, 0xffff};
        });
    }

    std::shared_ptr<host::Image> Get(const std::string& name) const {
        return ReadPicture(folder_ / name).image;
    }
    static Colour At(const host::Image& image, int x, int y) {
        host::Pixel pixel;
        image.Read(&pixel, image.PlaneAccess[0].Row(y) + x * image.PlaneAccess[0].Step, nullptr);
        return {pixel.Red >> 8, pixel.Green >> 8, pixel.Blue >> 8};
    }

    /// Expects a colour along all of its strokes and nowhere else.
    static void ExpectDrawn(const host::Image& image, Colour colour, const Strokes& strokes,
                            const Strokes& over = {}) {
        for (int y = 0; y < image.Height; ++y)
            for (int x = 0; x < image.Width; ++x)
                if (At(image, x, y) == colour) {
                    ASSERT_LE(DistanceTo(strokes, x + 0.5, y + 0.5), 1.25) << x << " " << y;
                }
        const auto seenNear = [&](double x, double y) {
            for (int v = -1; v <= 1; ++v)
                for (int u = -1; u <= 1; ++u) {
                    const int column = static_cast<int>(std::floor(x)) + u,
                              row = static_cast<int>(std::floor(y)) + v;
                    const bool inside = column >= 0 && column < image.Width && row >= 0 && row < image.Height;
                    if (!inside || At(image, column, row) == colour) return true;
                }
            return false;
        };
        for (const Stroke& stroke : strokes)
            for (double t = 0.0; t <= 1.0; t += 0.125) {
                const double x = stroke.x1 + t * (stroke.x2 - stroke.x1);
                const double y = stroke.y1 + t * (stroke.y2 - stroke.y1);
                ASSERT_TRUE(DistanceTo(over, x, y) < 2.0 || seenNear(x, y)) << x << " " << y;
            }
    }
};

TEST_F(Preview, WidgetsKeepTheirStrokesAndBoxesAtEveryZoom) {
    PutGrey(200, 120);
    for (double zoom : {0.5, 1.0, 2.0}) {
        const int width = static_cast<int>(200 * zoom), height = static_cast<int>(120 * zoom);
        const std::string size = std::to_string(width) + "x" + std::to_string(height);
        Show({"CrashZoom", "-i", "in.png", "-o", "out.png", "-s", "DimX=0.5", "-s", "Cntr=0.4,0.5", "--size",
              size.c_str()});
        const auto image = Get("out.png");
        ASSERT_EQ(image->Width, width);
        ASSERT_EQ(image->Height, height);

        Strokes white, yellow;
        AddCross(white, 80 * zoom, 60 * zoom);
        AddBox(white, 80 * zoom, 60 * zoom);
        AddCircle(yellow, 80 * zoom, 60 * zoom, 50 * zoom);
        AddBox(yellow, 130 * zoom, 60 * zoom);
        ExpectDrawn(*image, kWhite, white, yellow);
        ExpectDrawn(*image, kYellow, yellow);
        EXPECT_EQ(At(*image, static_cast<int>(80 * zoom), static_cast<int>(60 * zoom)), kGrey)
            << "within the box";
        EXPECT_EQ(At(*image, 0, 0), kGrey);
    }
}

TEST_F(Preview, HandOfAnAngleOnWidePixels) {
    PutGrey(100, 160);
    Show({"DBlur", "-i", "in.png", "-o", "out.png", "-s", "Angl=60", "--aspect", "2:1"});
    const auto image = Get("out.png");
    ASSERT_EQ(image->Width, 200); // wide pixels are shown wide
    ASSERT_EQ(image->Height, 160);
    // In the view the hand has its true angle: a fifth of the width long.
    const double x = 100 + 40 * std::cos(M_PI / 3), y = 80 + 40 * std::sin(M_PI / 3);
    Strokes red = {{100, 80, x, y}};
    // The box is square in pixels of the picture, which are twice as wide as high.
    AddBox(red, x, y, 8.0);
    ExpectDrawn(*image, kRed, red);
}

TEST_F(Preview, PictureIsFittedIntoTheView) {
    PutGrey(100, 50);
    Show({"Clean", "-i", "in.png", "-o", "out.png", "--size", "100x100"});
    const auto image = Get("out.png");
    EXPECT_EQ(At(*image, 50, 10), (Colour{0, 0, 0}));
    EXPECT_EQ(At(*image, 50, 25), kGrey);
    EXPECT_EQ(At(*image, 50, 74), kGrey);
    EXPECT_EQ(At(*image, 50, 75), (Colour{0, 0, 0}));
}

TEST_F(Preview, EdgeOfTheClearCircleSetsItsSize) {
    PutChecks(200, 100);
    const json drags =
        Show({"CrashZoom", "-i", "in.png", "-o", "out.png", "-s", "Spee=60", "--drag", "0.7,0.5:0.8,0.5"});
    ASSERT_EQ(drags.size(), 1u);
    EXPECT_EQ(drags[0]["hit"], true);
    ASSERT_EQ(drags[0]["changed"].size(), 1u);
    EXPECT_EQ(drags[0]["changed"][0]["id"], "DimX");
    EXPECT_NEAR(drags[0]["changed"][0]["value"], 0.6, 1e-6); // twice the distance from the centre
    EXPECT_EQ(drags[0]["undo"], "K7CrashZoom: Clear Radius");

    // The frame that follows is the one of that value.
    Show({"CrashZoom", "-i", "in.png", "-o", "typed.png", "-s", "Spee=60", "-s", "DimX=0.6000000238418579"});
    Show({"CrashZoom", "-i", "in.png", "-o", "before.png", "-s", "Spee=60"});
    EXPECT_TRUE(folder_.Get("out.png") == folder_.Get("typed.png"));
    EXPECT_FALSE(folder_.Get("out.png") == folder_.Get("before.png"));
}

TEST_F(Preview, SizesEndWithTheDisplayedRange) {
    PutGrey(200, 100);
    const json drags = Show({"CrashZoom", "-i", "in.png", "-o", "out.png", "--drag", "0.7,0.5:8,0.5"});
    EXPECT_EQ(drags[0]["changed"][0]["value"], 10.0);
}

TEST_F(Preview, CentreIsDraggedWithItsCircle) {
    PutGrey(200, 100);
    const json drags = Show({"CrashZoom", "-i", "in.png", "-o", "out.png", "--drag", "0.5,0.5:0.25,0.8",
                             "--drag", "0.45,0.8:0.4,0.8"});
    EXPECT_EQ(drags[0]["changed"][0]["id"], "Cntr");
    EXPECT_NEAR(drags[0]["changed"][0]["value"][0], 0.25, 1e-6);
    EXPECT_NEAR(drags[0]["changed"][0]["value"][1], 0.8, 1e-6);
    EXPECT_EQ(drags[0]["undo"], "K7CrashZoom: Centre");
    EXPECT_EQ(drags[1]["changed"][0]["id"], "DimX");
    EXPECT_NEAR(drags[1]["changed"][0]["value"], 0.3, 1e-6);
}

TEST_F(Preview, AngleFollowsThroughAllQuadrants) {
    PutGrey(200, 100);
    const struct {
        const char* aspect;
        double x, y, degrees;
    } cases[] = {
        {"1:1", 0.7, 0.9, 45.0},  {"1:1", 0.3, 0.9, 135.0}, {"1:1", 0.3, 0.1, 225.0},
        {"1:1", 0.7, 0.1, 315.0}, {"1:1", 0.5, 0.9, 90.0},  {"1:1", 0.2, 0.5, 180.0},
        {"1:1", 0.5, 0.2, 270.0}, {"2:1", 0.6, 0.9, 45.0},  {"2:1", 0.4, 0.9, 135.0},
        {"2:1", 0.4, 0.1, 225.0}, {"2:1", 0.6, 0.1, 315.0}, {"1:2", 0.9, 0.9, 45.0},
    };
    for (const auto& drag : cases) {
        const std::string to = "0.7,0.5:" + std::to_string(drag.x) + "," + std::to_string(drag.y);
        const json drags =
            Show({"DBlur", "-i", "in.png", "-o", "out.png", "--aspect", drag.aspect, "--drag", to.c_str()});
        ASSERT_EQ(drags[0]["changed"].size(), 1u) << to;
        EXPECT_EQ(drags[0]["changed"][0]["id"], "Angl");
        EXPECT_NEAR(drags[0]["changed"][0]["value"], drag.degrees, 1e-3) << drag.aspect << " " << to;
    }
}

TEST_F(Preview, AngleIsDraggedFromWhereItStands) {
    PutGrey(100, 100);
    const json drags =
        Show({"DBlur", "-i", "in.png", "-o", "out.png", "-s", "Angl=90", "--drag", "0.5,0.7:0.3,0.5"});
    EXPECT_EQ(drags[0]["changed"][0]["value"], 180.0);
    EXPECT_EQ(drags[0]["undo"], "K7DBlur: Angle");
}

TEST_F(Preview, DraggingNothingChangesNothing) {
    PutChecks(200, 100);
    for (const char* tool : {"CrashZoom", "DBlur", "Clean"}) {
        Show({tool, "-i", "in.png", "-o", "still.png"});
        const json drags = Show({tool, "-i", "in.png", "-o", "out.png", "--drag", "0.1,0.9:0.8,0.2"});
        EXPECT_EQ(drags[0]["hit"], false) << tool;
        EXPECT_TRUE(drags[0]["changed"].empty());
        EXPECT_TRUE(drags[0]["undo"].is_null());
        EXPECT_TRUE(folder_.Get("out.png") == folder_.Get("still.png"));
    }
    const json drags = Show({"DBlur", "-i", "in.png", "-o", "out.png", "--drag", "0.7,0.5:0.7,0.5"});
    EXPECT_EQ(drags[0]["hit"], true);
    EXPECT_TRUE(drags[0]["changed"].empty());
    EXPECT_TRUE(drags[0]["undo"].is_null());
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
        EXPECT_FALSE(folder_.Has("out.png"));
    }
}

TEST_F(Preview, MissingFrameFails) {
    Show({"DBlur", "-i", "none.png", "-o", "out.png"}, 1);
    EXPECT_NE(Err().find("none.png"), std::string::npos) << Err();
    EXPECT_FALSE(folder_.Has("out.png"));
}

} // namespace
} // namespace app::test
