#include "tests/tools/HeapWatch.h"
#include "tests/tools/Stage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <limits>
#include <map>
#include <thread>
#include <tuple>

namespace k7::test {
namespace {

/// Raises an operator's abort flag after a while, if the frame is still in progress.
class Deadline {
public:
    Deadline(host::Operator& op, std::chrono::milliseconds after)
        : thread_([this, &op, after] {
            const auto end = std::chrono::steady_clock::now() + after;
            while (!done_ && std::chrono::steady_clock::now() < end)
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            if (!done_) op.AbortFlag = true;
        }) {}
    ~Deadline() {
        done_ = true;
        thread_.join();
    }

private:
    std::atomic<bool> done_ = false;
    std::thread thread_;
};

/// Every tool, in words and in floats.
struct AllTools : testing::TestWithParam<std::tuple<host::Registry*, bool>> {
    const host::Registry& tool = *std::get<0>(GetParam());
    const bool floats = std::get<1>(GetParam());
    HeapWatch heap{floats};
};

INSTANTIATE_TEST_SUITE_P(Registry, AllTools, testing::Combine(testing::ValuesIn(Tools()), testing::Bool()),
                         [](const auto& of) {
                             return std::get<0>(of.param)->GetAttrS(host::kTagRegName) +
                                    (std::get<1>(of.param) ? "InFloats" : "InWords");
                         });

constexpr int kSizes[][2] = {{1, 1}, {2, 3}, {640, 1}, {1, 480}, {65, 63}};

TEST_P(AllTools, RenderEverySizeShapeAndThreadCountWithoutLeaks) {
    for (const auto& size : kSizes)
        for (double aspect : {1.0, 2.0, 0.9})
            for (int threads : {1, 2, 7}) {
                const Processors processors(threads);
                NoiseClip clip(size[0], size[1], aspect);
                Stage stage(tool, clip, floats);
                const std::vector<float> words = stage.Render();
                EXPECT_EQ(words.size(), static_cast<std::size_t>(size[0] * size[1] * 4))
                    << size[0] << " x " << size[1] << " aspect " << aspect << " threads " << threads;
                EXPECT_EQ(stage.Render(), words) << "the same frame again";
            }
    EXPECT_EQ(heap.Growth(), 0);
    EXPECT_GT(heap.PicturesSeen, 0);
    EXPECT_EQ(heap.WordsOutOfRange, 0);
}

TEST_P(AllTools, RenderAtBothEndsOfEveryShownRange) {
    NoiseClip clip(65, 63);
    const std::size_t settings = Stage(tool, clip, floats).Settings().size();
    for (std::size_t i = 0; i < settings; ++i)
        for (host::Tag end : {host::kTagShownLow, host::kTagShownHigh}) {
            Stage stage(tool, clip, floats);
            host::Input& input = *stage.Settings()[i];
            stage.Write(input, input.HasAttr(end) ? input.GetAttrD(end) : end == host::kTagShownHigh);
            EXPECT_FALSE(stage.Render().empty()) << input.Name();
        }
    EXPECT_EQ(heap.Growth(), 0);
    EXPECT_EQ(heap.WordsOutOfRange, 0);
}

TEST_P(AllTools, SurviveHostileValues) {
    const double inf = std::numeric_limits<double>::infinity();
    const double values[] = {std::nan(""), inf, -inf, 1e30, -1e30, 2147483648.0, -2147483649.0, -1.0, 1e9};
    NoiseClip clip(31, 17);
    const std::size_t settings = Stage(tool, clip, floats).Settings().size();
    for (std::size_t i = 0; i < settings; ++i)
        for (double value : values) {
            Stage stage(tool, clip, floats);
            host::Input& input = *stage.Settings()[i];
            stage.Write(input, value);
            const Deadline deadline(*stage.op, std::chrono::milliseconds(200));
            const bool rendered = !stage.Render().empty();
            EXPECT_TRUE(rendered || stage.op->AbortFlag) << input.Name() << " at " << value;
        }
    EXPECT_EQ(heap.Growth(), 0);
    EXPECT_EQ(heap.WordsOutOfRange, 0);
}

TEST_P(AllTools, StopWhenAbortedAtAnyMoment) {
    NoiseClip clip(65, 63);
    std::minstd_rand random(static_cast<unsigned>(tool.GetAttrI(host::kTagRegNumber)));
    const Processors processors(2);
    for (int round = 0; round < 10; ++round) {
        Stage stage(tool, clip, floats);
        const Deadline deadline(*stage.op, std::chrono::milliseconds(random() % 8));
        const bool rendered = !stage.Render().empty();
        EXPECT_TRUE(rendered || stage.op->AbortFlag);
    }
    EXPECT_EQ(heap.Growth(), 0);
}

TEST_P(AllTools, RunBesideAnyOtherToolAsAlone) {
    const Processors processors(3);
    NoiseClip clip(65, 63);
    const std::vector<host::Registry*> tools = Tools();
    const auto at = std::find(tools.begin(), tools.end(), &tool) - tools.begin();
    const host::Registry& other = *tools[static_cast<std::size_t>(at + 1) % tools.size()];
    const std::vector<float> alone = Stage(tool, clip, floats).Render();
    const std::vector<float> otherAlone = Stage(other, clip, floats).Render();

    std::vector<float> beside, otherBeside;
    std::thread thread([&] { otherBeside = Stage(other, clip, floats).Render(); });
    beside = Stage(tool, clip, floats).Render();
    thread.join();
    EXPECT_EQ(beside, alone);
    EXPECT_EQ(otherBeside, otherAlone);
}

TEST(ToolRegistry, EachIdNumberAndNameOccursOnce) {
    std::map<std::string, int> seen;
    for (const host::Registry* tool : Tools()) {
        ++seen[tool->Id().Text()];
        ++seen[std::to_string(tool->GetAttrI(host::kTagRegNumber))];
        ++seen[tool->GetAttrS(host::kTagRegShortName)];
        EXPECT_EQ(tool->GetAttrS(host::kTagRegVersion), "V5.0.1 built May 28 2008");
        EXPECT_EQ(tool->GetAttrS(host::kTagRegHelp),
                  "Quorvane_DF.chm::/dfHTML/" + tool->GetAttrS(host::kTagRegName).substr(2) + ".html");
    }
    for (const auto& [text, count] : seen) EXPECT_EQ(count, 1) << text;
}

} // namespace
} // namespace k7::test
