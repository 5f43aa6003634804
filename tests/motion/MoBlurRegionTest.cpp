#include "motion/MoBlur.h"

#include "tests/motion/PlainMotion.h"
#include "tests/motion/Shot.h"

namespace k7::test {
namespace {

/// A dark clip of 100 x 80 with a bright box, given by its columns and rows, in each frame.
struct MatteShot : Shot {
    MatteShot() : Shot(100, 80, 0) {
        const int boxes[][4] = {{10, 20, 30, 40}, {15, 30, 25, 35}, {40, 60, 50, 70}, {0, -1, 0, -1}};
        for (const auto& box : boxes)
            clip.Frames.push_back(MakePicture(100, 80, [&](int x, int y, int c) {
                return c == 3 || (x >= box[0] && x <= box[1] && y >= box[2] && y <= box[3]) ? 30000 : 100;
            }));
        core.AutoBound.Value = 1;
        core.ApplyMotionBlur.Value = 0;
    }

    void ExpectRegion(int left, int right, int bottom, int top) const {
        EXPECT_FLOAT_EQ(static_cast<float>(centre.X), static_cast<float>(left + right) / 200.0f);
        EXPECT_FLOAT_EQ(static_cast<float>(centre.Y), static_cast<float>(bottom + top) / 160.0f);
        EXPECT_FLOAT_EQ(static_cast<float>(scaleX.X), static_cast<float>(right - left) / 100.0f);
        EXPECT_FLOAT_EQ(static_cast<float>(scaleY.X), static_cast<float>(top - bottom) / 100.0f);
    }
};

TEST(MoBlurRegion, IsTheUnionOfTheBoundsOfTwoFrames) {
    MatteShot shot;
    EXPECT_TRUE(Same(*shot.Frame(1), shot.At(1)));
    shot.ExpectRegion(10, 30, 25, 40);
    EXPECT_EQ(shot.clip.Reads, (std::vector<double>{0, 1}));
    shot.Frame(0); // the frame before the first is the first
    shot.ExpectRegion(10, 30, 25, 40);
    shot.Frame(2.75);
    shot.ExpectRegion(15, 60, 25, 70);
}

TEST(MoBlurRegion, IsTheWholeFrameWhereNothingIsAboveTheThreshold) {
    MatteShot shot;
    shot.Frame(3);
    shot.ExpectRegion(0, 99, 0, 79);
    for (double threshold : {91.5, 91.6, 1e300}) { // 30000 of 32767 is 91.55 percent
        shot.core.BoundThreshold.Value = threshold;
        shot.Frame(1);
        threshold < 91.55 ? shot.ExpectRegion(10, 30, 25, 40) : shot.ExpectRegion(0, 99, 0, 79);
    }
}

TEST(MoBlurRegion, StaysWithTheControlsWhenTheMatteCannotBeRead) {
    MatteShot shot;
    shot.clip.Broken = true;
    shot.Frame(1);
    shot.core.MatteInput.Input = nullptr;
    shot.Frame(1);
    EXPECT_EQ(shot.centre.Writes, 0);
}

TEST(MoBlurRegion, OfAMatteSteersTheBlur) {
    Shot shot;
    const Picture before = shot.Frame(2);
    Clip matte;
    matte.Frames.push_back(
        MakePicture(120, 90, [](int x, int y, int) { return x == y + 20 && y < 60 ? 32767 : 0; }));
    shot.core.MatteInput.Input = &matte;
    shot.core.AutoBound.Value = 1;
    const int region[4] = {20, 79, 0, 59};
    const K7Image& previous = *shot.clip.Frames[1];
    const Picture want = K7Image::Make(120, 90);
    PlainRender(*want, previous, shot.At(2), PlainEstimate(previous, shot.At(2), 2.5f, 655.34f, region),
                {6, 1.0f, 1.0f, 1.0f}, 1);
    EXPECT_TRUE(Same(*shot.Frame(2), *want));
    EXPECT_FALSE(Same(*want, *before));
}

} // namespace
} // namespace k7::test
