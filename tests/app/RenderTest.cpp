#include "tests/app/ProgramStage.h"

#include <nlohmann/json.hpp>

#include <regex>

// k7 render, from picture files to picture files.

namespace app::test {
namespace {

/// How far two pictures lie apart, in 16-bit units; `through` is what becomes of a word on its way.
int Difference(const Picture& got, const Picture& want, int (*through)(int)) {
    EXPECT_EQ(got.image->Width, want.image->Width);
    EXPECT_EQ(got.image->Height, want.image->Height);
    EXPECT_EQ(got.image->PixelDepth, want.image->PixelDepth);
    EXPECT_EQ(got.channels, want.channels);
    int most = 0;
    for (int y = 0; y < want.image->Height; ++y)
        for (int x = 0; x < want.image->Width; ++x) {
            const host::Pixel a = At(*got.image, x, y), b = At(*want.image, x, y);
            for (auto channel :
                 {&host::Pixel::Red, &host::Pixel::Green, &host::Pixel::Blue, &host::Pixel::Alpha})
                most = std::max(most, std::abs(a.*channel - through(b.*channel)));
        }
    return most;
}

/// Bit 0 of a word goes, and comes back as its bit 15.
int ThroughFifteenBits(int word) {
    return (word & ~1) | word >> 15;
}

TEST_F(Program, PicturesOfEveryLayoutPassThroughAWindowOfOnePixel) {
    using host::Depth;
    const struct {
        const char* name;
        Depth depth;
        int channels;
        int lost; ///< what the file format itself may lose
    } cases[] = {{"a.png", Depth::Int16, 4, 0}, {"b.png", Depth::Int16, 3, 0}, {"c.png", Depth::Int16, 1, 0},
                 {"d.tif", Depth::Int16, 4, 0}, {"e.exr", Depth::Half, 4, 16}, {"f.exr", Depth::Float, 4, 0},
                 {"g.png", Depth::Int8, 4, 0},  {"h.png", Depth::Int8, 1, 0},  {"i.png", Depth::Int8, 2, 0},
                 {"j.tif", Depth::Float, 3, 0}};
    for (const auto& c : cases) {
        PutNoise(c.name, 17, 9, c.depth, c.channels);
        const std::string out = "out." + std::string(c.name);
        EXPECT_EQ(Run({"render", "Clean", "-i", c.name, "-o", out.c_str(), "-s", "XRad=0", "-s", "YRad=0",
                       "--quiet"}),
                  0);
        EXPECT_EQ(Err(), "") << c.name;
        EXPECT_EQ(Out(), "") << c.name;
        // An opaque alpha and 8-bit words survive the loss of bit 0 as they are.
        const bool exact = c.depth == Depth::Int8;
        EXPECT_LE(
            Difference(Get(out), Get(c.name), exact ? [](int word) { return word; } : ThroughFifteenBits),
            c.lost)
            << c.name;
    }
}

TEST_F(Program, AJpegGivesAPictureOfItsOwnKind) {
    EXPECT_EQ(Run({"render", "Clean", "-i", "sample:", "-f", "4", "-o", "a.jpg"}), 0);
    ExpectOneLine("jpeg files hold no 16-bit RGBA pictures; writing 8-bit RGB");
    EXPECT_EQ(Run({"render", "Clean", "-i", "a.jpg", "-o", "b.jpg", "--quiet"}), 0);
    EXPECT_EQ(Err(), "");
    EXPECT_EQ(Get("b.jpg").image->PixelDepth, host::Depth::Int8);
    EXPECT_EQ(Get("b.jpg").channels, 3);
}

TEST_F(Program, TheMedianIsTakenOverTheFilesPixels) {
    PutNoise("in.png", 5, 3);
    EXPECT_EQ(Run({"render", "K7.Clean", "-i", "Clip to Clean=in.png", "-o", "out.png", "-s",
                   "Horizontal Radius=5000", "-s", "YRad=5000", "-t", "3", "--quiet"}),
              0);
    const Picture in = Get("in.png"), out = Get("out.png");
    std::vector<int> reds;
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 5; ++x) reds.push_back(At(*in.image, x, y).Red >> 1);
    std::sort(reds.begin(), reds.end());
    EXPECT_EQ(At(*out.image, 2, 1).Red >> 1, reds[7]);
}

TEST_F(Program, FarmsGetTheLinesThatTheyParse) {
    PutNoise("in.0001.png", 8, 8);
    for (const char* name : {"in.0002.png", "in.0004.png"})
        std::filesystem::copy(folder_ / "in.0001.png", folder_ / name);
    const std::string start = R"(Render started at \d\d:\d\d:\d\d \(Range: 1 to 2\)\n)";
    const std::string frame =
        R"(Rendered frame 1 \(1 of 2\), took \d+\.\d\d secs\nRendered frame 2 \(2 of 2\), took \d+\.\d\d secs\n)";
    EXPECT_EQ(Run({"render", "Clean", "-i", "in.%04d.png", "-o", "out.####.png", "-f", "1-2"}), 0);
    EXPECT_TRUE(std::regex_match(
        Out(), std::regex(start + frame + R"(Render completed successfully at \d\d:\d\d:\d\d\n)")))
        << Out();
    EXPECT_EQ(Err(), "");
    EXPECT_TRUE(folder_.Has("out.0001.png") && folder_.Has("out.0002.png"));

    // Every frame of the clip: one is missing, the others are rendered all the same.
    EXPECT_EQ(Run({"render", "Clean", "-i", "in.%04d.png", "-o", "all.%d.png"}), 1);
    EXPECT_NE(Out().find("(Range: 1 to 4)"), std::string::npos);
    EXPECT_NE(Out().find("Rendered frame 4 (4 of 4)"), std::string::npos);
    EXPECT_NE(Out().find("Render failed: 1 of 4 frames\n"), std::string::npos);
    ExpectOneLine("in.0003.png");
    EXPECT_LT(Out().find("Rendered frame 2 (2 of 4)"), Out().find("Frame 3 failed"));
    EXPECT_TRUE(folder_.Has("all.1.png") && folder_.Has("all.4.png"));
    EXPECT_FALSE(folder_.Has("all.3.png"));

    EXPECT_EQ(
        Run({"render", "Clean", "-i", "in.%04d.png", "-o", "held.%d.png", "--missing", "hold", "--quiet"}),
        0);
    EXPECT_EQ(folder_.Get("held.3.png"), folder_.Get("held.2.png"));
    EXPECT_EQ(Run({"render", "Clean", "-i", "in.%04d.png", "-o", "black.png", "--missing", "black", "-f", "3",
                   "--quiet"}),
              0);
    EXPECT_EQ(At(*Get("black.png").image, 3, 3).Alpha, 0);
}

TEST_F(Program, FramesThatAreThereCanBeLeftAlone) {
    PutNoise("in.png", 4, 4);
    folder_.Put("out.1.png", "done before");
    EXPECT_EQ(Run({"render", "Clean", "-i", "in.png", "-o", "out.%d.png", "-f", "1-2", "--skip-existing"}),
              0);
    EXPECT_EQ(folder_.Get("out.1.png"), "done before");
    EXPECT_TRUE(folder_.Has("out.2.png"));
}

TEST_F(Program, SettingsAreSavedAndTakenUpAgain) {
    PutNoise("in.png", 30, 20);
    EXPECT_EQ(Run({"render", "Clean", "-i", "in.png", "-o", "a.%d.png", "-f", "0,5,9", "-s",
                   "XRad=@0:1,9:900", "-s", "YRad=200", "--save-settings", "kept.json", "--quiet"}),
              0);
    EXPECT_EQ(nlohmann::json::parse(folder_.Get("kept.json")),
              nlohmann::json::parse(
                  R"({"tool":"K7.Clean","controls":{"XRad":{"keys":[[0,1],[9,900]]},"YRad":200}})"));
    EXPECT_EQ(Run({"render", "Clean", "-i", "in.png", "-o", "b.%d.png", "-f", "0,5,9", "--settings",
                   "kept.json", "--quiet"}),
              0);
    for (const char* frame : {"0", "5", "9"})
        EXPECT_EQ(folder_.Get("a." + std::string(frame) + ".png"),
                  folder_.Get("b." + std::string(frame) + ".png"));
    EXPECT_NE(folder_.Get("a.0.png"), folder_.Get("a.9.png"));
}

TEST_F(Program, FramesThatFailEndWithOne) {
    folder_.Put("text.png", "no picture");
    const std::size_t files = folder_.Count();
    const struct {
        const char* input;
        const char* output;
        const char* frame;
        const char* word;
    } cases[] = {{"none.png", "out.png", "0", "none.png"},
                 {"text.png", "out.png", "0", "text.png"},
                 {"sample:", "out.png", "24", "frame 24"},
                 {"sample:", "none/out.png", "0", "none/out.png"},
                 {"sample:", "/proc/out.png", "0", "/proc/out.png"}};
    for (const auto& c : cases) {
        EXPECT_EQ(Run({"render", "Clean", "-i", c.input, "-o", c.output, "-f", c.frame, "--quiet"}), 1)
            << c.word;
        ExpectOneLine(c.word);
        EXPECT_EQ(folder_.Count(), files);
    }
}

} // namespace
} // namespace app::test
