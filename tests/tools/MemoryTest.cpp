#include "tests/tools/HeapWatch.h"
#include "tests/tools/Stage.h"

#include <gtest/gtest.h>

#include <climits>

namespace k7::test {
namespace {

class ToolMemory : public testing::TestWithParam<host::Registry*> {};

INSTANTIATE_TEST_SUITE_P(Registry, ToolMemory, testing::ValuesIn(Tools()),
                         [](const auto& tool) { return tool.param->GetAttrS(host::kTagRegName); });

/// Switches every check box and list, which makes the less usual stages of a tool run.
void TurnSwitches(Stage& stage) {
    for (host::Input* input : stage.Settings()) {
        const std::string kind = input->GetAttrS(host::kTagControlKind);
        if (kind == "CheckboxControl")
            stage.Write(*input, input->GetAttrD(host::kTagDefault) == 0.0);
        else if (kind == "ComboControl")
            stage.Write(*input, 1.0);
    }
}

TEST_P(ToolMemory, AClipFreesEveryBlock) {
    HeapWatch heap;
    const Processors processors(3);
    NoiseClip clip(65, 63);
    for (bool turned : {false, true}) {
        Stage stage(*GetParam(), clip);
        if (turned) TurnSwitches(stage);
        for (int frame = 0; frame < 4; ++frame) EXPECT_FALSE(stage.Render(frame).empty());
    }
    EXPECT_EQ(heap.BlocksLeft(), 0);
    EXPECT_EQ(heap.Growth(), 0);
}

TEST_P(ToolMemory, AnyAllocationMayFail) {
    HeapWatch heap;
    const Processors processors(2);
    NoiseClip clip(40, 37);
    for (bool turned : {false, true}) {
        int at = 0;
        do {
            Stage stage(*GetParam(), clip);
            if (turned) TurnSwitches(stage);
            heap.FailAfter(at);
            const std::vector<float> words = stage.Render();
            EXPECT_TRUE(words.empty() || words.size() == 40u * 37u * 4u) << "allocation " << at;
            const bool failed = heap.HasFailed();
            heap.FailAfter(INT_MIN);
            EXPECT_FALSE(stage.Render().empty()) << "the frame after allocation " << at;
            if (!failed) break;
        } while (++at < 500);
        EXPECT_LT(at, 500);
        EXPECT_GT(at, 1); // the failures were real
    }
    EXPECT_EQ(heap.BlocksLeft(), 0);
    EXPECT_EQ(heap.WordsOutOfRange, 0);
}

} // namespace
} // namespace k7::test
