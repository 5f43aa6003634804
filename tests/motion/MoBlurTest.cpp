#include "motion/MoBlur.h"

#include "tests/motion/PlainMotion.h"
#include "tests/motion/Shot.h"
#include "tests/support/FailingMemory.h"

namespace k7::test {
namespace {

TEST(MoBlur, BlursTheEarlierFrameAlongTheMotion) {
    Shot shot;
    const int region[4] = {30, 90, 15, 75}; // half of the width of 120 about (60, 45)
    const K7Image& previous = *shot.clip.Frames[1];
    const K7Image& current = *shot.clip.Frames[2];
    const PlainField field = PlainEstimate(previous, current, 2.5f, 655.34f, region);
    const Picture want = K7Image::Make(120, 90);
    for (int threads : {1, 2, 3, 8}) {
        shot.owner.OnThreads = threads > 2;
        PlainRender(*want, previous, current, field, {6, 1.0f, 1.0f, 1.0f}, threads);
        EXPECT_TRUE(Same(*shot.Frame(2, threads), *want)) << threads;
    }
}

TEST(MoBlur, TheFirstFrameAndTheSwitchedOffToolPassThrough) {
    Shot shot;
    EXPECT_TRUE(Same(*shot.Frame(0), shot.At(0)));
    EXPECT_TRUE(Same(*shot.Frame(-3), shot.At(0)));
    shot.core.ApplyMotionBlur.Value = 0;
    EXPECT_TRUE(Same(*shot.Frame(2), shot.At(2)));
    EXPECT_TRUE(shot.clip.Reads.empty());
}

TEST(MoBlur, FramesDoNotDependOnTheOneBefore) {
    Shot forward;
    std::vector<Picture> frames;
    for (int i = 0; i < 4; ++i) frames.push_back(forward.Frame(i));
    Shot shuffled;
    for (int i : {3, 1, 1, 0, 2}) EXPECT_TRUE(Same(*shuffled.Frame(i), *frames[static_cast<std::size_t>(i)]));
}

TEST(MoBlur, TakesAChangedFrameSize) {
    Shot shot;
    Shot other(83, 71);
    const Picture want = other.Frame(2);
    const Picture before = shot.Frame(2);
    shot.clip.Frames.swap(other.clip.Frames);
    EXPECT_TRUE(Same(*shot.Frame(2), *want));
    shot.clip.Frames.swap(other.clip.Frames);
    EXPECT_TRUE(Same(*shot.Frame(2), *before));
}

TEST(MoBlur, ComparesWithItselfWhatHasNoReadablePredecessor) {
    Shot shot;
    shot.clip.Broken = true;
    EXPECT_TRUE(Same(*shot.Frame(2), shot.At(2)));
    shot.core.ImageInput.Input = nullptr;
    EXPECT_TRUE(Same(*shot.Frame(2), shot.At(2)));
}

TEST(MoBlur, RestoresAlphaWhenAsked) {
    Shot shot;
    Picture want = shot.Frame(2);
    want->CopyAlpha(&shot.At(2));
    shot.core.ProcessAlpha = false;
    EXPECT_TRUE(Same(*shot.Frame(2), *want));
}

TEST(MoBlurControls, OnlyAnAutoBoundThatIsOnClearsMatchScales) {
    Shot shot;
    for (bool on : {true, false}) {
        shot.match.X = 1.0;
        shot.autoBound.X = on;
        shot.core.AutoBoundChanged(7.0);
        EXPECT_EQ(shot.match.X, on ? 0.0 : 1.0);
        EXPECT_EQ(shot.match.LastTime, kTimeNow);
        shot.core.RefreshControls();
        EXPECT_EQ(shot.scaleY.Shown, on);
    }
}

TEST(MoBlurMemory, AFailureNamesTheBufferAndPassesTheFrameThroughUntilTheNext) {
    const Picture want = Shot().Frame(2);
    std::vector<std::string> messages;
    bool sufficed = false;
    for (int blocks = 2; !sufficed; ++blocks) { // two for the output of the runner
        Shot shot;
        {
            const FailingMemory memory(blocks);
            const Picture out = shot.Frame(2);
            sufficed = memory.Sufficed();
            ASSERT_TRUE(Same(*out, sufficed ? *want : shot.At(2))) << blocks;
        }
        EXPECT_LE(shot.owner.Messages.size(), 1u);
        for (const std::string& message : shot.owner.Messages)
            if (messages.empty() || messages.back() != message) messages.push_back(message);
        EXPECT_TRUE(Same(*shot.Frame(2), *want)) << blocks;
    }
    std::vector<std::string> named;
    for (const char* number : {"00", "01", "02", "03", "04", "05", "06", "07", "08", "09", "10"})
        named.push_back(std::string("Failed to get memory for buffer ") + number);
    named.insert(named.end(), {"Failed to blur cimg 1\n", "Failed to blur cimg 2\n"});
    EXPECT_EQ(messages, named);
}

} // namespace
} // namespace k7::test
