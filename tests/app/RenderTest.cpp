#include "media/Shrink.h"
#include "tests/app/ProgramStage.h"

#include <tuple>

#include <nlohmann/json.hpp>

#include <regex>

// k7 render, from picture files to picture files.

namespace app::test {
namespace {

TEST_F(Program, AJpegBecomesAJpeg) {
    EXPECT_EQ(Run({"render", "Clean", "-i", "sample:", "-f", "4", "-o", "a.jpg"}), 0);
    ExpectOneLine("jpeg files cannot hold 16-bit RGBA pictures; writing 8-bit RGB");
    EXPECT_EQ(Run({"render", "Clean", "-i", "a.jpg", "-o", "b.jpg", "--quiet"}), 0);
    EXPECT_EQ(Err(), "");
    EXPECT_EQ(Get("b.jpg").image->PixelDepth, host::Depth::Int8);
    EXPECT_EQ(Get("b.jpg").channels, 3);
}

TEST_F(Program, TheMedianIsTakenOverTheFilesPixels) {
    Put("in.png", MakeNoise(5, 3));
    const auto words = [&](const char* name) {
        const Picture picture = Get(name);
        std::vector<int> reds;
        for (int i = 0; i < 15; ++i) reds.push_back(At(*picture.image, i % 5, i / 5).Red >> 1);
        return reds;
    };
    std::vector<int> reds = words("in.png");
    EXPECT_EQ(Run({"render", "Clean", "-i", "in.png", "-o", "same.png", "-s", "XRad=0", "-s", "YRad=0"}), 0);
    EXPECT_EQ(words("same.png"), reds); // a window of one pixel
    EXPECT_EQ(Run({"render", "K7.Clean", "-i", "Clip to Clean=in.png", "-o", "out.png", "-s",
                   "Horizontal Radius=5000", "-s", "YRad=5000", "-t", "3", "--quiet"}),
              0);
    EXPECT_EQ(Out() + Err(), "");
    std::sort(reds.begin(), reds.end());
    EXPECT_EQ(words("out.png")[7], reds[7]);
}

TEST_F(Program, FarmLinesAreParsable) {
    Put("in.0001.png", MakeNoise(8, 8));
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

    // Every frame of the clip: one is missing, the others are rendered.
    EXPECT_EQ(Run({"render", "Clean", "-i", "in.%04d.png", "-o", "all.%d.png"}), 1);
    EXPECT_NE(Out().find("(Range: 1 to 4)"), std::string::npos);
    EXPECT_NE(Out().find("Rendered frame 4 (4 of 4)"), std::string::npos);
    EXPECT_NE(Out().find("Render failed: 1 of 4 frames\n"), std::string::npos);
    EXPECT_EQ(Err().find("k7: warning: 1 frame of the clip missing: 3\n"), 0u)
        << "before any work: " << Err();
    EXPECT_NE(Err().find("in.0003.png"), std::string::npos);
    EXPECT_LT(Out().find("Rendered frame 2 (2 of 4)"), Out().find("Frame 3 failed"));
    EXPECT_TRUE(folder_.Has("all.1.png") && folder_.Has("all.4.png"));
    EXPECT_FALSE(folder_.Has("all.3.png"));

    EXPECT_EQ(
        Run({"render", "Clean", "-i", "in.%04d.png", "-o", "held.%d.png", "--missing", "hold", "--quiet"}),
        0);
    EXPECT_EQ(folder_.Get("held.3.png"), folder_.Get("held.2.png"));
}

TEST_F(Program, SettingsAreSavedAndLoadedAndExistingFramesCanBeSkipped) {
    Put("in.png", MakeNoise(30, 20));
    EXPECT_EQ(Run({"render", "Clean", "-i", "in.png", "-o", "a.%d.png", "-f", "0,5,9", "-s",
                   "XRad=@0:1,9:900", "-s", "YRad=200", "--save-settings", "kept.json", "--quiet"}),
              0);
    const nlohmann::json kept = nlohmann::json::parse(folder_.Get("kept.json"));
    for (const char* common : {"FloatPictures", "Blend", "ProcessAlpha", "PreDividePostMultiply"})
        EXPECT_TRUE(kept["controls"].contains(common)) << common;
    EXPECT_EQ(kept["tool"], "K7.Clean");
    EXPECT_EQ(kept["controls"]["XRad"], nlohmann::json::parse(R"({"keys":[[0,1],[9,900]]})"));
    EXPECT_EQ(kept["controls"]["YRad"], 200);
    Put("b.0.png", MakeNoise(3, 2));
    const std::string before = folder_.Get("b.0.png");
    folder_.Put("b.5.png", ""); // counts as missing
    EXPECT_EQ(Run({"render", "Clean", "-i", "in.png", "-o", "b.%d.png", "-f", "0,5,9", "--settings",
                   "kept.json", "--skip-existing", "--quiet"}),
              0);
    EXPECT_EQ(folder_.Get("b.0.png"), before);
    EXPECT_EQ(folder_.Get("b.5.png"), folder_.Get("a.5.png"));
    EXPECT_EQ(folder_.Get("b.9.png"), folder_.Get("a.9.png"));
    EXPECT_NE(folder_.Get("a.0.png"), folder_.Get("a.9.png"));
}

TEST_F(Program, NoInputIsOverwrittenByWhateverName) {
    for (const char* name : {"in.0001.png", "in.0002.png", "in.0003.png"}) Put(name, MakeNoise(8, 8));
    std::filesystem::create_hard_link(folder_ / "in.0003.png", folder_ / "out.3.png");
    std::filesystem::create_symlink("in.0001.png", folder_ / "link.png");
    const std::string before = folder_.Get("in.0003.png");
    for (const auto& [input, output, frames] : {std::tuple("in.%04d.png", "in.%04d.png", "1-3"),
                                                {"in.%04d.png", "out.%d.png", "1-3"},
                                                {"in.0003.png", "in.%04d.png", "1-5"},
                                                {"in.0001.png", "link.png", "0"}})
        ExpectWrong({"render", "Clean", "-i", input, "-o", output, "-f", frames, "--quiet"},
                    "would overwrite");
    EXPECT_EQ(folder_.Get("in.0003.png"), before);
}

TEST_F(Program, FaultsAreReportedTogetherAndFoldersCreated) {
    EXPECT_EQ(Run({"render", "Clean", "-i", "none.png", "-o", "out.sgi", "-f", "1-2"}), 2);
    for (const char* word : {"none.png", "sgi", "room for one frame"})
        EXPECT_NE(Err().find(word), std::string::npos) << Err();
    EXPECT_EQ(std::count(Err().begin(), Err().end(), '\n'), 3);
    EXPECT_EQ(Run({"render", "Clean", "-i", "a\nRendered frame 0.png", "-o", "out.png"}), 1);
    ExpectOneLine("a Rendered");
    const Arguments deep = {"render", "Clean", "-i", "sample:", "-o", "a/b/out.png", "-f", "0", "--quiet"};
    Arguments strict = deep;
    strict.push_back("--no-mkdir");
    EXPECT_EQ(Run(strict), 1);
    EXPECT_EQ(Run(deep), 0);
    EXPECT_TRUE(folder_.Has("a/b/out.png"));
}

TEST_F(Program, AFileKeepsItsModeAndALinkItsTarget) {
    Put("out.png", MakeNoise(4, 4));
    std::filesystem::permissions(folder_ / "out.png", std::filesystem::perms(0600));
    std::filesystem::create_symlink("out.png", folder_ / "link.png");
    EXPECT_EQ(Run({"render", "Clean", "-i", "sample:", "-o", "link.png", "-f", "0", "--quiet"}), 0);
    EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "link.png"));
    EXPECT_EQ(Get("out.png").image->Width, 960);
    EXPECT_EQ(std::filesystem::status(folder_ / "out.png").permissions(), std::filesystem::perms(0600));
    EXPECT_EQ(Run({"render", "Clean", "-i", "sample:", "-o", "/dev/null", "-f", "0", "--quiet"}), 2);
    EXPECT_FALSE(std::filesystem::is_regular_file("/dev/null"));
}

TEST_F(Program, ValuesThatAreChangedAreWarnedOfAndLogged) {
    Put("in.png", MakeNoise(8, 8));
    EXPECT_EQ(Run({"render", "clean", "-i", "in.png", "-o", "out.png", "-s", "xrad=3.5", "--quiet", "--log",
                   "run.log"}),
              0);
    ExpectOneLine("XRad (");
    const std::string log = folder_.Get("run.log");
    for (const char* word : {"Render started", "Rendered frame 0", "completed"})
        EXPECT_NE(log.find(word), std::string::npos) << log;
    folder_.Put("keys.json", R"({"tool":"K7.Clean","controls":{"XRad":{"keys":[["nan",1],[9,900]]}}})");
    for (const char* file : {"keys.json", "."})
        EXPECT_EQ(Run({"render", "Clean", "-i", "in.png", "-o", "o.png", "--settings", file}), 2) << file;
}

TEST_F(Program, AProxyIsASmallerCopyOfTheFrame) {
    const auto render = [&](const char* tool, const char* setting, const char* proxy, const char* name) {
        EXPECT_EQ(Run({"render", tool, "-i", "sample:", "-f", "3", "-o", name, "-s", setting, "--proxy",
                       proxy, "--save-settings", "kept.json", "--quiet"}),
                  0);
        return Get(name).image;
    };
    // A length relative to the frame and one in pixels.
    for (const auto& [tool, setting] : {std::pair{"Defocus", "RadB=8"}, {"Sharpen", "RadS=8"}}) {
        EXPECT_EQ(
            Run({"render", tool, "-i", "sample:", "-f", "3", "-o", "whole.png", "-s", setting, "--quiet"}),
            0);
        const host::Ref<host::Image> want(Shrunk(*Get("whole.png").image, 4));
        const std::shared_ptr<host::Image> small = render(tool, setting, "4", "small.png");
        ASSERT_EQ(small->Width, want->Width);
        ASSERT_EQ(small->Height, want->Height);
        double apart = 0;
        for (int y = 0; y < small->Height; ++y)
            for (int x = 0; x < small->Width; ++x)
                apart += std::abs(At(*small, x, y).Green - At(*want, x, y).Green);
        EXPECT_LT(apart / small->Width / small->Height, 655.0) << tool << ": a percent of white in the mean";
        EXPECT_NE(folder_.Get("kept.json").find(": 8.0"), std::string::npos) << "saved as it was set";
    }
}

TEST_F(Program, FailedFramesExitWithOne) {
    folder_.Put("text.png", "no picture");
    const std::size_t files = folder_.Count();
    const struct {
        const char *input, *output, *frame, *word;
    } cases[] = {{"none.png", "out.png", "0", "none.png"},
                 {"text.png", "out.png", "0", "text.png"},
                 {"sample:", "out.png", "24", "frame 24"},
                 {"sample:", "text.png/out.png", "0", "text.png/out.png"},
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
