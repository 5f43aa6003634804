#include "media/Settings.h"
#include "host/Document.h"
#include "host/Registry.h"
#include "host/Tags.h"
#include "media/Errors.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>

namespace media::test {
namespace {

using namespace host;
using nlohmann::json;

/// A tool with a control of every kind. A change of its list sets its amount, as presets do.
class Specimen : public Operator {
public:
    Specimen(const Registry* entry, const ScriptVal& value, const TagList& tags)
        : Operator(entry, value, tags) {
        const auto number = [&](const char* label, const char* id, const char* kind, TagList more) {
            TagList all{{kTagDataType, FuID("Number")}, {kTagControlKind, FuID(kind)}};
            for (const TaggedValue& tag : more) all.Add(tag);
            return AddInput(FuID(label), FuID(id), all);
        };
        amount = number("Amount", "Amnt", "SliderControl",
                        {{kTagDefault, 2.0}, {kTagLowest, -10.0}, {kTagHighest, 10.0}});
        number("Turned On", "TuOn", "CheckboxControl", {});
        list = number("Style", "Styl", "ComboControl",
                      {{kTagEntry, "Uni"}, {kTagEntry, "Horizontal"}, {kTagEntry, "2"}});
        number("Low", "LooR", "ColorControl", {});
        number("Low", "LooG", "ColorControl", {});
        number("Amnt", "Othr", "SliderControl", {});
        number("No Id", "", "SliderControl", {});
        AddInput(FuID("Centre"), FuID("Cent"),
                 {{kTagDataType, FuID("Point")}, {kTagDefaultX, 0.5}, {kTagDefaultY, 0.25}});
        AddInput(FuID("Lens File"), FuID("File"), {{kTagDataType, FuID("Text")}, {kTagDefaultText, "a.txt"}});
        AddInput(FuID("Clip"), FuID("Clip"), {{kTagDataType, FuID("Image")}});
    }
    void NotifyChanged(Input* in, Parameter* param, double time, TagList* tags) override {
        if (Document->Silent) return;
        if (in == list) amount->SetCurve({{7, 0}, {}});
        Operator::NotifyChanged(in, param, time, tags);
    }
    Input* amount;
    Input* list;
};

class Settings : public testing::Test {
protected:
    Curve CurveOf(const char* id) const { return op_.FindInput(id)->GetCurve(); }
    double Value(const char* id) const { return CurveOf(id).Constant.x; }
    void Set(const std::string& setting) { ApplySetting(op_, setting); }

    std::string WhyNot(const std::string& setting) {
        try {
            Set(setting);
        } catch (const UsageError& error) {
            return error.what();
        }
        return "";
    }

    FusionDoc document_;
    Registry entry_{&ClassRegistry(), FuID("Test.Specimen"), {{kTagRegName, "Specimen"}}};
    Specimen& op_ = *new Specimen(&entry_, {}, {{kTagDocument, &document_}});
    Ref<Operator> owner_{&op_};
};

TEST_F(Settings, ValuesOfEveryKind) {
    Set("Amnt=-3.5");
    EXPECT_EQ(Value("Amnt"), -3.5);
    EXPECT_EQ(Value("Othr"), 0) << "an id goes before a label";
    Set("Amount=4");
    EXPECT_EQ(Value("Amnt"), 4);
    Set("Amnt=99");
    EXPECT_EQ(Value("Amnt"), 10) << "the host holds the value within its limits";
    EXPECT_EQ(ApplySetting(op_, "amnt=99"), "Amnt (Amount): 99 counts as 10");
    EXPECT_EQ(ApplySetting(op_, "Amnt=9"), "");
    EXPECT_NE(WhyNot("File=\xff"), "");
    for (const auto& [word, value] :
         {std::pair{"1", 1}, {"off", 0}, {"ON", 1}, {"3", 3}, {"No", 0}, {"true", 1}}) {
        Set(std::string("TuOn=") + word);
        EXPECT_EQ(Value("TuOn"), value);
    }
    Set("No Id=3");
    EXPECT_EQ(Value(""), 3);
    Set("Cent=0.1,-2");
    EXPECT_EQ(CurveOf("Cent").Constant, (Curve::Value{0.1, -2}));
    Set("Lens File=/b=c,d.txt");
    EXPECT_EQ(op_.FindInput("File")->GetText(), "/b=c,d.txt");
}

TEST_F(Settings, ListsTakeNumberOrTextAndTheToolReacts) {
    Set("Styl=1");
    EXPECT_EQ(Value("Styl"), 1);
    EXPECT_EQ(Value("Amnt"), 7) << "the preset has written its slider";
    Set("Amnt=3");
    EXPECT_EQ(Value("Amnt"), 3) << "a later setting wins";
    Set("style= horizontal ");
    EXPECT_EQ(Value("Styl"), 1);
    Set("Style=2");
    EXPECT_EQ(Value("Styl"), 2);
}

TEST_F(Settings, KeysRampBetweenAndHoldOutside) {
    Set("Amnt=@10:1,20:3,15:2.5");
    const Curve curve = CurveOf("Amnt");
    EXPECT_EQ(curve.Keys.size(), 3u);
    EXPECT_EQ(curve.At(0).x, 1);
    EXPECT_EQ(curve.At(12.5).x, 1.75);
    EXPECT_EQ(curve.At(99).x, 3);
    Set("Cent=@0:0,1;10:1,0");
    EXPECT_EQ(CurveOf("Cent").At(5), (Curve::Value{0.5, 0.5}));
    Set("TuOn=@-2:off,3:on");
    EXPECT_EQ(CurveOf("TuOn").Keys.at(3).x, 1);
    Set("Amnt=5");
    EXPECT_FALSE(CurveOf("Amnt").Animated()) << "a plain value takes the keys away";
}

TEST_F(Settings, WrongWordsAreNamedWithTheRightOnes) {
    EXPECT_EQ(WhyNot("Amnr=1"), "Specimen has no control 'Amnr', did you mean 'Amnt'?");
    EXPECT_EQ(WhyNot("Amuont=1"), "Specimen has no control 'Amuont', did you mean 'Amount'?");
    EXPECT_EQ(WhyNot("Low=1"), "'Low' is the label of several controls: name one of LooR, LooG");
    EXPECT_EQ(WhyNot("Clip=1"), "'Clip' is an image: give it a file with -i");
    EXPECT_EQ(WhyNot("Amnt"), "'Amnt' is not a setting: write CONTROL=VALUE");
    EXPECT_NE(WhyNot("Style=Vertical").find("0 'Uni', 1 'Horizontal'"), std::string::npos);
    for (const char* setting :
         {"Amnt=", "Amnt=1x", "TuOn=perhaps", "Style=3", "Style=0.5", "Cent=1", "Cent=1,2,3", "Cent=1;2",
          "Amnt=@", "Amnt=@5", "Amnt=@a:1", "Amnt=@1:", "Amnt=@inf:1", "Cent=@1:2", "Amnt=@1:2;3:4", "=1"})
        EXPECT_NE(WhyNot(setting), "") << setting;
}

TEST_F(Settings, SavedSettingsAreRestored) {
    Set("Styl=1");
    Set("Amnt=@0:1,12.5:-2");
    Set("Cent=@3:0.1,0.2;4:0.3,inf");
    Set("Othr=nan");
    Set("LooR=0.30000000000000004");
    Set("File=lens \"7\".txt");
    const json saved = json::parse(SaveSettings(op_).dump());
    EXPECT_EQ(saved["tool"], "Test.Specimen");
    EXPECT_EQ(saved["controls"].size(), 9u);
    EXPECT_TRUE(saved["controls"].contains("No Id"));

    Specimen& other = *new Specimen(&entry_, {}, {{kTagDocument, &document_}});
    const Ref<Operator> owner(&other);
    RestoreSettings(other, saved);
    EXPECT_EQ(json(SaveSettings(other)), saved);
    EXPECT_EQ(other.FindInput("Amnt")->GetCurve().At(12.5).x, -2) << "the list has not written its preset";
    EXPECT_FALSE(document_.Silent);
    EXPECT_TRUE(std::isnan(other.FindInput("Othr")->GetCurve().Constant.x));
}

TEST_F(Settings, FilesThatAreNotSettingsAreRefused) {
    for (const char* text :
         {"{}", "[]", R"({"tool":"Test.Other","controls":{}})", R"({"tool":"Test.Specimen"})",
          R"({"tool":"Test.Specimen","controls":{"Nope":1}})",
          R"({"tool":"Test.Specimen","controls":{"Amnt":"x"}})",
          R"({"tool":"Test.Specimen","controls":{"Cent":1}})",
          R"({"tool":"Test.Specimen","controls":{"Amnt":{"keys":[[1]]}}})"})
        EXPECT_THROW(RestoreSettings(op_, json::parse(text)), UsageError) << text;
    EXPECT_FALSE(document_.Silent);
}

} // namespace
} // namespace media::test
