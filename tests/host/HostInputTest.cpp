#include "host/Document.h"
#include "host/Operator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace host::test {
namespace {

/// Records what it is told.
class Listener : public Operator {
public:
    explicit Listener(FusionDoc* document) : Operator(nullptr, {}, {{kTagDocument, document}}) {}

    void NotifyChanged(Input* in, Parameter* param, double time, TagList* tags) override {
        const auto* number = dynamic_cast<const Number*>(param);
        Heard.push_back(in->Id() + "=" + (number ? std::to_string(static_cast<int>(number->Value)) : "?") +
                        "@" + std::to_string(static_cast<int>(time)));
        Operator::NotifyChanged(in, param, time, tags);
    }

    std::vector<std::string> Heard;
};

class HostInput : public testing::Test {
protected:
    Input* Add(const char* id, const TagList& tags = {}) {
        return op->AddInput(FuID("Label"), FuID(id), tags);
    }

    double At(Input* input, double time) {
        const Ref<Parameter> value(input->GetSource(time));
        return dynamic_cast<Number&>(*value).Value;
    }
    void Write(Input* input, double value, double time) {
        input->SetSource(AutoNumber(value).get(), time, 1, nullptr);
    }

    FusionDoc document;
    Ref<Listener> op{new Listener(&document)};
};

TEST_F(HostInput, StartsAtItsDefaultAndKeepsWhatFitsItWithinItsLimits) {
    Input* input = Add("Size", {{kTagDefault, 2.5}, {kTagLowest, 0.0}, {kTagHighest, 360.0}});
    EXPECT_EQ(At(input, 7.0), 2.5);
    Write(input, 4.0, 9.0);
    EXPECT_EQ(At(input, 0.0), 4.0); // no curve: the value of all times
    EXPECT_EQ(op->Heard, std::vector<std::string>{"Size=4@9"});
    EXPECT_EQ(op->ChangeCount(), 1);
    Write(input, 400.0, 0.0);
    EXPECT_EQ(At(input, 0.0), 360.0);
    Write(input, -1.0, 0.0);
    EXPECT_EQ(At(input, 0.0), 0.0);
    input->SetSource(AutoParameter(new Text("ninety")).get(), 0.0, 1, nullptr);
    EXPECT_EQ(At(input, 0.0), 0.0);
    EXPECT_EQ(op->Heard.size(), 3u);
}

TEST_F(HostInput, AnimatedInputsGetKeysAndRampsBetweenThem) {
    Input* input = Add("Size");
    input->SetCurve({{}, {{10.0, {1.0, 0.0}}, {20.0, {3.0, 0.0}}}});
    EXPECT_EQ(At(input, 0.0), 1.0);
    EXPECT_EQ(At(input, 15.0), 2.0);
    EXPECT_EQ(At(input, 99.0), 3.0);
    Write(input, 9.0, 15.0);
    EXPECT_EQ(At(input, 12.5), 5.0);
    document.CurrentTime = 20.0;
    EXPECT_EQ(At(input, kTimeNow), 3.0);
    Write(input, 7.0, kTimeNow); // sets no key
    EXPECT_EQ(input->GetCurve().Keys.size(), 3u);
}

TEST_F(HostInput, ADragIsOneStepThatCanBeUndone) {
    Input* width = Add("Width");
    Input* height = Add("Height");
    width->StartUndo("Box: Width", nullptr);
    height->StartUndo("Box: Height", nullptr);
    Write(width, 5.0, 0.0);
    Write(width, 6.0, 0.0);
    width->EndUndo(true, nullptr);
    EXPECT_TRUE(document.UndoTitles().empty()); // the other input's bracket is still open
    height->EndUndo(true, nullptr);
    EXPECT_EQ(document.UndoTitles(), std::vector<std::string>{"Box: Width"});
    EXPECT_TRUE(document.Undo());
    EXPECT_EQ(At(width, 0.0), 0.0);
    EXPECT_FALSE(document.Undo());

    width->StartUndo("Nothing moved", nullptr);
    width->EndUndo(true, nullptr);
    EXPECT_TRUE(document.UndoTitles().empty());

    width->StartUndo("Width", nullptr);
    Write(width, 5.0, 0.0);
    width->EndUndo(true, nullptr);
    op = Ref<Listener>(); // a step is dropped with its tool
    EXPECT_FALSE(document.Undo());
}

TEST(HostRequest, ReadsEachInputOnceAndHandsOverTheResult) {
    const Ref<Listener> op(new Listener(nullptr));
    Input* input = op->AddInput(FuID("A"), FuID("A"), {{kTagDefault, 1.0}});
    Output* output = op->AddOutput(FuID("Output"), FuID("Output"), {});
    Request request(3.0);
    const Parameter* first = request.GetInputData(input, 0);
    input->SetSource(AutoNumber(2.0).get(), 3.0, 1, nullptr);
    EXPECT_EQ(request.GetInputData(input, 0), first);
    EXPECT_EQ(dynamic_cast<const Number*>(first)->Value, 1.0);
    EXPECT_EQ(request.OutputData(output), nullptr);
    auto* result = new Number(5.0);
    request.SetOutputData(output, result);
    EXPECT_EQ(request.OutputData(output), result);
}

} // namespace
} // namespace host::test
