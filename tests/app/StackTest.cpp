#include "tests/app/ProgramStage.h"

namespace app::test {
namespace {

/// A stack in one run against its tools one by one, through lossless files.
struct StackRuns : Program {
    void ExpectSame(const std::string& a, const std::string& b) {
        const Picture one = Get(a);
        const Picture other = Get(b);
        std::vector<float> row(static_cast<std::size_t>(one.image->Width) * 4), otherRow(row.size());
        ASSERT_EQ(one.image->Width, other.image->Width);
        for (int y = 0; y < one.image->Height; ++y) {
            one.image->ReadRow(y, row.data());
            other.image->ReadRow(y, otherRow.data());
            ASSERT_EQ(row, otherRow) << a << " and " << b << " in row " << y;
        }
    }
    int Render(Arguments arguments) {
        arguments.insert(arguments.begin(), "render");
        arguments.push_back("--quiet");
        return Run(arguments);
    }
};

TEST_F(StackRuns, AreTheirToolsOneByOneInBothDepths) {
    Put("still.tif", MakeNoise(90, 60));
    ASSERT_EQ(Render({"Dither", "-i", "still.tif", "-f", "1-3", "-o", "in.%d.tif"}),
              0); // different at each frame
    ASSERT_EQ(Render({"Dither", "-i", "in.%d.tif", "-o", "in.%d.exr", "--depth", "float"}), 0);
    for (const std::string ending : {".tif", ".exr"}) {
        const std::string in = "in.%d" + ending, stack = "stack.%d" + ending, a = "a.%d" + ending,
                          b = "b.%d" + ending, c = "c.%d" + ending;
        ASSERT_EQ(Render({"Clean", "-s", "XRad=30", "--then", "Sharpen", "-s", "Powe=8", "-i", in.c_str(),
                          "--then", "MoBlur", "-sPrss=1", "-o", stack.c_str()}),
                  0)
            << Err();
        ASSERT_EQ(Render({"Clean", "-s", "XRad=30", "-i", in.c_str(), "-o", a.c_str()}), 0);
        ASSERT_EQ(Render({"Sharpen", "-s", "Powe=8", "-i", a.c_str(), "-o", b.c_str()}), 0);
        ASSERT_EQ(Render({"MoBlur", "-s", "Prss=1", "-i", b.c_str(), "-o", c.c_str()}), 0);
        for (const std::string frame : {"1", "2", "3"})
            ExpectSame("stack." + frame + ending, "c." + frame + ending);
    }
}

TEST_F(StackRuns, RenderTheSameFramesInParallelAndInChunks) {
    Put("still.tif", MakeNoise(64, 40));
    ASSERT_EQ(Render({"Dither", "-i", "still.tif", "-f", "0-5", "-o", "in.%d.tif"}), 0);
    const std::vector<Arguments> tools = {{"Clean"},
                                          {"CrashZoom"},
                                          {"DBlur"},
                                          {"Defocus"},
                                          {"Dither"},
                                          {"Sharpen"},
                                          {"Trace"},
                                          {"VGaussian"},
                                          {"Flare", "-s", "LMOn=0", "-s", "Stre=9", "-s", "GloR=@0:3,5:30"},
                                          {"Flare2", "-s", "Stks=9"},
                                          {"FlareSpot"},
                                          {"MoBlur", "-s", "Prss=1", "-s", "Aund=1"},
                                          {"Flare2", "--then", "MoBlur", "-s", "Prss=1"}};
    for (const Arguments& tool : tools) {
        const auto render = [&](const char* output, Arguments more) {
            more.insert(more.begin(), tool.begin(), tool.end());
            more.insert(more.end(), {"-i", "in.%d.tif", "-o", output});
            ASSERT_EQ(Render(more), 0) << Err();
        };
        render("one.%d.tif", {"--jobs", "1"});
        render("three.%d.tif", {"--jobs", "3"});
        render("limited.%d.tif", {"--jobs", "4", "--memory", "1M"});
        const bool animated = tool.size() > 6; // streaks are drawn for the first frame of a run
        if (!animated) render("chunk.%d.tif", {"-f", "3-4"});
        for (const std::string frame : {"0", "3", "4", "5"}) {
            ExpectSame("one." + frame + ".tif", "three." + frame + ".tif");
            ExpectSame("one." + frame + ".tif", "limited." + frame + ".tif");
            if (!animated && (frame == "3" || frame == "4"))
                ExpectSame("one." + frame + ".tif", "chunk." + frame + ".tif");
        }
    }
}

TEST_F(StackRuns, ReportInTheOrderOfTheFrames) {
    for (const char* frame : {"1", "2", "4", "5"})
        Put(std::string("in.") + frame + ".png", MakeNoise(60, 40));
    const Arguments all = {"render",     "Defocus", "-i",  "in.%d.png", "-o",
                           "out.%d.png", "-f",      "1-5", "--jobs",    "4"};
    EXPECT_EQ(Run(all), 1);
    std::size_t last = 0;
    for (const char* line :
         {"Rendered frame 1 (1 of 5)", "Rendered frame 2 (2 of 5)", "Frame 3 failed",
          "Rendered frame 4 (4 of 5)", "Rendered frame 5 (5 of 5)", "Render failed: 1 of 5"}) {
        EXPECT_GT(Out().find(line), last) << line << " in " << Out();
        EXPECT_NE(last = Out().find(line), std::string::npos) << line;
    }
    Arguments stopped = all;
    stopped.insert(stopped.end(), {"--stop-at-error", "--jobs", "1"});
    stopped.erase(stopped.begin() + 8, stopped.begin() + 10);
    EXPECT_EQ(Run(stopped), 1);
    EXPECT_EQ(Out().find("Rendered frame 4"), std::string::npos) << Out();
    EXPECT_EQ(Run({"render", "Defocus", "-i", "in.%d.png", "-o", "late.%d.png", "-f", "1,3,4", "--shift", "1",
                   "--progress", "openjd"}),
              0)
        << Err();
    EXPECT_EQ(folder_.Get("late.3.png"), folder_.Get("out.4.png"));
    EXPECT_NE(Out().find("openjd_progress: 100.0\n"), std::string::npos) << Out();
}

TEST_F(StackRuns, AreSavedAndRestoredWithMasks) {
    Put("in.tif", MakeNoise(60, 40));
    Put("matte.png", MakeNoise(30, 20));
    ASSERT_EQ(
        Render({"Defocus", "-s", "RadB=3", "--then", "Trace", "--set=Leve=30", "--input=EffectMask=matte.png",
                "-s", "Blend=0.5", "-i", "in.tif", "-o", "a.tif", "--save-settings", "look.json"}),
        0)
        << Err();
    ASSERT_EQ(Render({"--settings", "look.json", "-i", "in.tif", "-o", "none.tif"}), 0) << Err();
    ASSERT_EQ(Render({"Defocus", "--then", "Trace", "-i", "EffectMask=matte.png", "--settings", "look.json",
                      "-i", "in.tif", "-o", "b.tif"}),
              0)
        << Err();
    ExpectSame("a.tif", "b.tif");
    ASSERT_EQ(Run({"preview", "--settings", "look.json", "-i", "in.tif", "-o", "view.png", "--on", "1"}), 0)
        << Err();
}

TEST_F(StackRuns, AreRefusedNamingTheWrongToolOrControl) {
    Put("in.png", MakeNoise(10, 10));
    const auto wrong = [&](const std::string& look, const std::string& word) {
        folder_.Put("look.json", look);
        ExpectWrong({"render", "--settings", "look.json", "-i", "in.png", "-o", "out.png"}, word);
    };
    wrong(R"({"tools": []})", "not a list of tools");
    wrong(R"({"tools": [{"controls": {}}]})", "tool 1 has no name");
    wrong(R"({"tools": [{"tool": "K7.Clean", "controls": {}}, {"tool": "K7.Clea", "controls": {}}]})",
          "K7.Clea");
    wrong(
        R"({"tools": [{"tool": "K7.Clean", "controls": {}}, {"tool": "K7.Trace", "controls": {"Lev": 3}}]})",
        "tool 2, K7Trace: K7Trace has no control 'Lev'");
    wrong(R"({"tools": [{"tool": "K7.Clean", "on": false, "controls": {}}]})", "switched off");
    wrong(R"([])", "not as k7 writes them");
    ExpectWrong({"render", "Clean", "-i", "in.png", "-o", "o.png", "--then"}, "--then needs a value");
    ExpectWrong(
        {"render", "Clean", "--then", "Flare", "-i", "Background=in.png", "-i", "in.png", "-o", "o.png"},
        "is that of the tool before it");
    ExpectWrong({"list", "--then", "Clean"}, "render and preview");
    ExpectWrong({"preview", "Clean", "--on", "2", "-i", "in.png", "-o", "o.png"}, "--on 2");
}

} // namespace
} // namespace app::test
