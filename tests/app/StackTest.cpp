#include "tests/app/ProgramStage.h"

namespace app::test {
namespace {

/// A stack in one run against its tools one by one through files that lose nothing.
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
              0); // another at each frame
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

TEST_F(StackRuns, AreSavedAndComeBackWithMasks) {
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

TEST_F(StackRuns, ThatAreWrongAreRefusedWithTheToolAndTheControl) {
    Put("in.png", MakeNoise(10, 10));
    const auto wrong = [&](const std::string& look, const std::string& word) {
        folder_.Put("look.json", look);
        ExpectWrong({"render", "--settings", "look.json", "-i", "in.png", "-o", "out.png"}, word);
    };
    wrong(R"({"tools": []})", "no list of tools");
    wrong(R"({"tools": [{"controls": {}}]})", "tool 1 has no name");
    wrong(R"({"tools": [{"tool": "K7.Clean", "controls": {}}, {"tool": "K7.Clea", "controls": {}}]})",
          "K7.Clea");
    wrong(
        R"({"tools": [{"tool": "K7.Clean", "controls": {}}, {"tool": "K7.Trace", "controls": {"Lev": 3}}]})",
        "tool 2, K7Trace: K7Trace has no control 'Lev'");
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
