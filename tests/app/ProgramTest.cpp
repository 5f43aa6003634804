#include "app/Program.h"
#include "app/Errors.h"
#include "app/PictureFile.h"
#include "tests/app/Folder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <csignal>
#include <cstdint>
#include <iostream>
#include <regex>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

// The program that was built, run on files as a user runs it.

namespace app::test {
namespace {

using nlohmann::json;
using Arguments = std::vector<std::string>;

class Program : public testing::Test {
protected:
    void SetUp() override {
        before_ = std::filesystem::current_path();
        std::filesystem::current_path(folder_.Path());
    }
    void TearDown() override { std::filesystem::current_path(before_); }

    /// Carries out a command in the folder, in this process: starting k7 takes longer than most of what is
    /// asked.
    int Run(const Arguments& arguments) {
        std::vector<const char*> words = {"k7"};
        for (const std::string& argument : arguments) words.push_back(argument.c_str());
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const int code = RunProgram(static_cast<int>(words.size()), words.data());
        std::cout.flush();
        out_ = testing::internal::GetCapturedStdout();
        err_ = testing::internal::GetCapturedStderr();
        return code;
    }
    const std::string& Out() const { return out_; }
    const std::string& Err() const { return err_; }

    /// A picture of noise in the folder, in the given layout.
    void PutNoise(const std::string& name, int width, int height, host::Depth depth = host::Depth::Int16,
                  int channels = 4) {
        Picture picture;
        picture.channels = channels;
        picture.image = Share(host::Image::Make(width, height, depth));
        std::uint32_t state = 12345;
        const auto next = [&] { return static_cast<int>((state = state * 1664525u + 1013904223u) >> 16); };
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                host::Pixel pixel{next(), next(), next(), next()};
                if (channels < 3) pixel.Green = pixel.Blue = pixel.Red;
                picture.image->Write(
                    &pixel, picture.image->PlaneAccess[0].Row(y) + x * picture.image->PlaneAccess[0].Step,
                    nullptr);
            }
        WritePicture(folder_ / name, *picture.image, picture,
                     [](const std::string& text) { ADD_FAILURE() << text; });
    }
    Picture Get(const std::string& name) const { return ReadPicture(folder_ / name); }

    /// Expects exit code 2 and one line that holds `word`, and no file made.
    void ExpectWrong(const Arguments& arguments, const std::string& word) {
        const std::size_t files = folder_.Count();
        EXPECT_EQ(Run(arguments), 2) << word;
        ExpectOneLine(word);
        EXPECT_EQ(Out(), "");
        EXPECT_EQ(folder_.Count(), files);
    }
    void ExpectOneLine(const std::string& word) {
        const std::string text = Err();
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
        EXPECT_EQ(text.rfind("k7: ", 0), 0u) << text;
        EXPECT_NE(text.find(word), std::string::npos) << text;
    }

    Folder folder_;

private:
    std::filesystem::path before_;
    std::string out_, err_;
};

host::Pixel At(const host::Image& image, int x, int y) {
    host::Pixel pixel;
    image.Read(&pixel, image.PlaneAccess[0].Row(y) + x * image.PlaneAccess[0].Step, nullptr);
    return pixel;
}

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
        EXPECT_EQ(
            Run({"render", "Clean", "-i", c.name, "-o", out, "-s", "XRad=0", "-s", "YRad=0", "--quiet"}), 0);
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

TEST_F(Program, ListAndInfoTellWhatTheToolsTellTheHost) {
    ASSERT_EQ(Run({"list", "--json"}), 0);
    const json tools = json::parse(Out());
    ASSERT_FALSE(tools.empty());
    const json clean =
        *std::find_if(tools.begin(), tools.end(), [](const json& tool) { return tool["id"] == "K7.Clean"; });
    EXPECT_EQ(clean["number"], 101);
    EXPECT_EQ(clean["name"], "K7Clean");
    EXPECT_EQ(clean["short_name"], "Cln");
    EXPECT_EQ(clean["category"], "Quorvane Grimlets\\Set 01");
    EXPECT_EQ(clean["description"], " Cleans up the image using median filtering.");
    EXPECT_EQ(clean["help"], "Quorvane_DF.chm::/dfHTML/Clean.html");
    EXPECT_EQ(clean["version"], "V5.0.1 built May 28 2008");

    ASSERT_EQ(Run({"info", "K7Clean", "--json"}), 0);
    const json info = json::parse(Out());
    EXPECT_EQ(info["inputs"].size(), 1u);
    EXPECT_EQ(info["inputs"][0]["id"], "Clip to Clean");
    const json& control = info["controls"][0];
    EXPECT_EQ(control["id"], "XRad");
    EXPECT_EQ(control["label"], "Horizontal Radius");
    EXPECT_EQ(control["kind"], "SliderControl");
    EXPECT_EQ(control["default"], 2);
    EXPECT_EQ(control["shown"], json({1, 120}));
    EXPECT_EQ(control["limits"], nullptr);
    EXPECT_EQ(control["integer"], true);
    EXPECT_EQ(control["page"], "K7 Clean");
    EXPECT_EQ(control["hidden"], false);
    EXPECT_EQ(control["disabled"], false);

    for (const json& tool : tools) {
        EXPECT_EQ(Run({"info", tool["id"]}), 0);
        EXPECT_NE(Out().find(tool["id"].get<std::string>()), std::string::npos);
    }
}

TEST_F(Program, InfoShowsWhatSettingsBringToLight) {
    const auto hidden = [&](const Arguments& arguments, const std::string& id) {
        EXPECT_EQ(Run(arguments), 0);
        const json info = json::parse(Out());
        for (const json& control : info["controls"])
            if (control["id"] == id) return control["hidden"].get<bool>();
        ADD_FAILURE() << "no control " << id;
        return false;
    };
    EXPECT_TRUE(hidden({"info", "Defocus", "--json"}, "DpEd"));
    EXPECT_FALSE(hidden({"info", "Defocus", "-s", "Mode=Exact", "--json"}, "DpEd"));
    EXPECT_TRUE(hidden({"info", "VGaussian", "-s", "BRGB=off", "--json"}, "RadX"));
    ExpectWrong({"info", "Defocus", "-s", "Mood=1"}, "Mode");
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
    EXPECT_EQ(json::parse(folder_.Get("kept.json")),
              json::parse(R"({"tool":"K7.Clean","controls":{"XRad":{"keys":[[0,1],[9,900]]},"YRad":200}})"));
    EXPECT_EQ(Run({"render", "Clean", "-i", "in.png", "-o", "b.%d.png", "-f", "0,5,9", "--settings",
                   "kept.json", "--quiet"}),
              0);
    for (const char* frame : {"0", "5", "9"})
        EXPECT_EQ(folder_.Get("a." + std::string(frame) + ".png"),
                  folder_.Get("b." + std::string(frame) + ".png"));
    EXPECT_NE(folder_.Get("a.0.png"), folder_.Get("a.9.png"));
}

TEST_F(Program, WrongCommandsAreNamedInOneLine) {
    PutNoise("in.png", 4, 4);
    folder_.Put("bad.json", "{");
    const Arguments good = {"render", "Clean", "-i", "in.png", "-o", "out.png"};
    const auto with = [&](const Arguments& more) {
        Arguments all = good;
        all.insert(all.end(), more.begin(), more.end());
        return all;
    };
    ExpectWrong({}, "subcommand");
    ExpectWrong({"rendr", "Clean"}, "'rendr', did you mean 'render'?");
    ExpectWrong({"render", "Claen", "-i", "in.png", "-o", "out.png"}, "'Claen', did you mean 'Clean'?");
    ExpectWrong({"info", "Claen"}, "'Claen', did you mean 'Clean'?");
    ExpectWrong({"render", "Clean", "-o", "out.png"}, "--input");
    ExpectWrong({"render", "Clean", "-i", "Clip=in.png", "-o", "out.png"}, "'Clip'");
    ExpectWrong({"render", "Clean", "-i", "Clip to Claen=in.png", "-o", "out.png"},
                "did you mean 'Clip to Clean'?");
    ExpectWrong({"render", "Clean", "-i", "in.png", "-o", "out.xyz"}, "out.xyz");
    ExpectWrong({"render", "Clean", "-i", "none.%04d.png", "-o", "out.png"}, "none.%04d.png");
    ExpectWrong({"render", "Clean", "-i", "in.%d.png", "-o", "./in.#.png", "-f", "1"}, "./in.#.png");
    ExpectWrong(with({"-s", "XRda=3"}), "'XRda', did you mean 'XRad'?");
    ExpectWrong(with({"-s", "XRad=many"}), "'many'");
    ExpectWrong(with({"-f", "1-3"}), "'out.png'");
    ExpectWrong(with({"-f", "3-1"}), "'3-1'");
    ExpectWrong(with({"-t", "0"}), "--threads");
    ExpectWrong(with({"--aspect", "1"}), "'1'");
    ExpectWrong(with({"--missing", "hodl"}), "'hodl'");
    ExpectWrong(with({"--extent", "x"}), "'x'");
    ExpectWrong(with({"--settings", "bad.json"}), "'bad.json'");
    ExpectWrong(with({"--quite"}), "'--quite', did you mean '--quiet'?");
    ExpectWrong(with({"more.png"}), "'more.png'");
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

/// Starts the program as it was built, in the current folder and with its streams closed to the test.
pid_t Start(Arguments arguments) {
    arguments.insert(arguments.begin(), K7_PROGRAM);
    std::vector<char*> words;
    for (std::string& argument : arguments) words.push_back(argument.data());
    words.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        const int nowhere = ::open("/dev/null", O_RDWR);
        ::dup2(nowhere, STDOUT_FILENO);
        ::dup2(nowhere, STDERR_FILENO);
        ::execv(words[0], words.data());
        ::_exit(127);
    }
    return child;
}

int Wait(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST_F(Program, TheBuiltFileFindsItsPlugIn) {
    EXPECT_EQ(Wait(Start({"info", "Clean"})), 0);
    EXPECT_EQ(Wait(Start({"info", "Unclean"})), 2);
}

TEST_F(Program, CtrlCLeavesWholeFramesOnly) {
    for (const std::size_t frames : {0u, 1u, 3u}) {
        const pid_t child = Start({"render", "Clean", "-i", "sample:", "-o", "out.%02d.png", "--quiet"});
        for (int i = 0; i < 6000 && !folder_.Has("out.0" + std::to_string(frames) + ".png"); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            if (frames == 0 && i == 30) break; // somewhere in loading or in the first frame
        }
        ::kill(child, SIGINT);
        const int code = Wait(child);
        // Before k7 has set up its render the signal ends it at once.
        EXPECT_TRUE(code == 130 || (code == -SIGINT && frames == 0)) << code;
        EXPECT_GE(folder_.Count(), frames);
        EXPECT_LT(folder_.Count(), 24u);
        for (const auto& entry : std::filesystem::directory_iterator(folder_.Path())) {
            EXPECT_EQ(entry.path().extension(), ".png") << entry.path();
            EXPECT_NO_THROW(ReadPicture(entry.path().string()));
            std::filesystem::remove(entry.path());
        }
    }
}

} // namespace
} // namespace app::test
