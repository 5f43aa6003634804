#include "tests/app/ProgramStage.h"

#include <nlohmann/json.hpp>

// What k7 says about its tools, and how it handles wrong commands.

namespace app::test {
namespace {

using nlohmann::json;

TEST_F(Program, ListAndInfoDescribeTheToolsAsTheyAreRegistered) {
    ASSERT_EQ(Run({"list", "--json"}), 0);
    const json tools = json::parse(Out());
    ASSERT_FALSE(tools.empty());
    const json clean =
        *std::find_if(tools.begin(), tools.end(), [](const json& tool) { return tool["id"] == "K7.Clean"; });
    const json wanted = {{"number", 101},
                         {"name", "K7Clean"},
                         {"short_name", "Cln"},
                         {"category", "Quorvane Grimlets\\Set 01"},
                         {"description", " Cleans up the image using median filtering."},
                         {"help", "Quorvane_DF.chm::/dfHTML/Clean.html"},
                         {"version", "V5.0.1 built May 28 2008"}};
    for (const auto& [key, value] : wanted.items()) EXPECT_EQ(clean[key], value) << key;

    ASSERT_EQ(Run({"info", "K7Clean", "--json"}), 0);
    const json info = json::parse(Out());
    EXPECT_EQ(info["inputs"].size(), 1u);
    EXPECT_EQ(info["inputs"][0]["id"], "Clip to Clean");
    EXPECT_EQ(info["controls"][0]["disabled"], false);

    for (const json& tool : tools) {
        const auto id = tool["id"].get<std::string>();
        EXPECT_EQ(Run({"info", id.c_str()}), 0);
        EXPECT_NE(Out().find(id), std::string::npos);
    }
}

TEST_F(Program, InfoShowsControlsThatSettingsReveal) {
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

TEST_F(Program, WrongCommandsAreNamedInOneLine) {
    Put("in.png", MakeNoise(4, 4));
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

} // namespace
} // namespace app::test
