#include "filters/Defocus.h"

#include "tests/support/CoreRunner.h"
#include "tests/support/FakeInput.h"

namespace k7::test {
namespace {

/// The passes of a mode and a direction, each from one picture into another.
Picture PlainDefocus(const K7Image& in, float radiusX, float radiusY, int mode, bool dupEdges, int dire) {
    const auto pass = [&](const K7Image& from, float radius, int direction) {
        Picture to = K7Image::MakeCopy(in);
        if (mode == 1)
            to->GaussianRecursive(radius, &from, direction, true);
        else
            to->GaussianExact(radius, dupEdges, &from, direction, true);
        return to;
    };
    if (dire == 3) return pass(in, radiusY, 1);
    Picture rows = pass(in, radiusX, 0);
    return dire == 2 ? std::move(rows) : pass(*rows, radiusY, 1);
}

TEST(Defocus, RunsThePassesOfItsModeAndDirection) {
    const Picture in = Noise(40, 27);
    in->AspectX = 2.0;
    for (int mode : {1, 2})
        for (int dire : {1, 2, 3})
            for (bool dupEdges : {false, true}) {
                CoreRunner<Defocus> runner;
                runner.core.RadB.Value = 12.5; // 5 pixels of the 40, and 10 along columns by the aspect
                runner.core.Mode.Value = mode;
                runner.core.Dire.Value = dire;
                runner.core.DpEd.Value = dupEdges;
                const Picture want = PlainDefocus(*in, 5.0f, 10.0f, mode, dupEdges, dire);
                EXPECT_TRUE(Same(*runner.Run(*in, 3), *want)) << "mode " << mode << " direction " << dire;
            }
}

TEST(Defocus, NothingIsNoBlurInExactModeOnly) {
    const Picture in = Noise(20, 10);
    CoreRunner<Defocus> runner;
    runner.core.RadB.Value = 0.0;
    EXPECT_FALSE(Same(*runner.Run(*in), *in));
    runner.core.Mode.Value = 2;
    EXPECT_TRUE(Same(*runner.Run(*in), *in));
}

TEST(Defocus, ShowsDupEdgesInExactMode) {
    Defocus core;
    FakeInput mode, dupEdges;
    core.Mode.Input[0] = &mode;
    core.DpEd.Input[0] = &dupEdges;
    for (int entry : {0, 1, 0}) {
        mode.X = entry;
        core.RefreshControls();
        EXPECT_EQ(dupEdges.Shown, entry == 1);
        core.ShowDupEdges(12.0);
        EXPECT_EQ(dupEdges.Shown, entry == 1);
    }
}

} // namespace
} // namespace k7::test
