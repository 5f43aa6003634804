#include "motion/MoBlur.h"

#include "baselib/HeapMonitor.h"
#include "tests/motion/PlainMotion.h"
#include "tests/motion/Shot.h"

#include <initializer_list>

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
    shot.core.Prss.Value = 0;
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

TEST(MoBlur, TakesAnyRegion) {
    for (double value : std::initializer_list<double>{NAN, INFINITY, -INFINITY, 1e300, -1e300, 0.0, -0.5}) {
        Shot shot(60, 50);
        shot.core.Cere.Value = {value, value};
        shot.core.XSle.Value = value;
        const Picture out = shot.Frame(1);
        for (int i = 0; i < 60 * 50 * 4; ++i) ASSERT_LE(out->Pixels[i], 32767);
    }
}

TEST(MoBlurControls, FollowTheirSwitches) {
    Shot shot;
    shot.match.X = 1.0;
    shot.core.RefreshControls();
    EXPECT_FALSE(shot.scaleY.Shown);

    shot.autoBound.X = 1.0;
    shot.core.AutoBoundChanged(7.0);
    EXPECT_TRUE(shot.threshold.Shown);
    EXPECT_FALSE(shot.autoKey.Disabled);
    EXPECT_EQ(shot.match.X, 0.0);
    EXPECT_EQ(shot.match.LastTime, kTimeNow);

    shot.core.RefreshControls();
    EXPECT_TRUE(shot.scaleY.Shown);

    shot.match.X = 1.0;
    shot.autoBound.X = 0.0;
    shot.core.AutoBoundChanged(7.0);
    EXPECT_FALSE(shot.threshold.Shown);
    EXPECT_TRUE(shot.autoKey.Disabled);
    EXPECT_EQ(shot.match.X, 1.0);
}

/// Image blocks come from the runtime library until a number of them has been given out.
struct ShortOfMemory {
    explicit ShortOfMemory(int blocks) : left(blocks) {
        const auto alloc = [](void* context, std::size_t size) {
            int& rest = static_cast<ShortOfMemory*>(context)->left;
            return rest-- > 0 ? std::malloc(size) : nullptr;
        };
        hm_image_hooks = {this, alloc, [](void*, void* block) { std::free(block); }};
        hm_enabled = hm_use_image_hooks = 1;
    }
    ~ShortOfMemory() { hm_enabled = hm_use_image_hooks = 0; }
    int left;
};

TEST(MoBlurMemory, WithoutItTheFramePassesThroughAndTheNextTriesAgain) {
    int failures = 0;
    for (int blocks = 0; blocks < 30; ++blocks) {
        Shot shot;
        const Picture want = shot.Frame(2);
        Shot poor;
        {
            // The output of the runner is one of the blocks.
            const ShortOfMemory shortage(blocks + 1);
            const Picture out = poor.Frame(2);
            ASSERT_TRUE(Same(*out, shortage.left >= 0 ? *want : poor.At(2))) << blocks;
            failures += shortage.left < 0;
        }
        EXPECT_LE(poor.owner.Messages.size(), 1u);
        EXPECT_TRUE(Same(*poor.Frame(2), *want));
    }
    EXPECT_EQ(failures, 12); // the earlier frame and eleven work buffers
}

TEST(MoBlurMemory, NamesTheBufferThatIsMissing) {
    Shot shot;
    {
        const ShortOfMemory shortage(4); // the output, the earlier frame, two planes
        shot.Frame(2);
    }
    EXPECT_EQ(shot.owner.Messages, std::vector<std::string>{"Failed to get memory for buffer 02"});
}

} // namespace
} // namespace k7::test
