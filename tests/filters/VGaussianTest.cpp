#include "filters/VGaussian.h"

#include "tests/support/CoreRunner.h"
#include "tests/support/FakeInput.h"

namespace k7::test {
namespace {

/// The stages, each from one picture into another, as the choices call for them.
Picture PlainVGaussian(const K7Image& in, const VGaussian& core) {
    const Picture a = Flat(in.Width, in.Height, 0);
    const Picture b = Flat(in.Width, in.Height, 0);
    Picture out = K7Image::MakeCopy(in);
    const auto size = [&](double percent, double aspect) {
        return static_cast<float>(percent / 100.0 * in.Width * aspect);
    };
    const float rgbX = size(core.RadX.Value, in.AspectY);
    const float rgbY = size(core.RadY.Value, in.AspectX);
    const bool sync = core.Sync.Value;
    const float alphaX = sync ? rgbX : size(core.RdAX.Value, in.AspectY);
    const float alphaY = sync ? rgbY : size(core.RDAY.Value, in.AspectX);
    if (core.BRGB.Value) {
        a->GaussianRecursive(rgbX, &in, 0, false);
        out->GaussianRecursive(rgbY, a.get(), 1, false);
    }
    if (core.BluA.Value) {
        a->GaussianRecursiveChannel(alphaX, &in, 0, 3, true);
        b->GaussianRecursiveChannel(alphaY, a.get(), 1, 3, true);
        out->CopyAlpha(b.get());
    }
    return out;
}

TEST(VGaussian, EveryChoiceBlursItsChannelsBySizesOfItsOwn) {
    for (int choice = 0; choice < 8; ++choice)
        for (double aspect : {1.0, 2.0})
            for (int threads : {1, 3}) {
                const Picture in = Noise(37, 29);
                in->AspectX = aspect;
                CoreRunner<VGaussian> runner;
                runner.core.BRGB.Value = choice >> 2 & 1;
                runner.core.BluA.Value = choice >> 1 & 1;
                runner.core.Sync.Value = choice & 1;
                runner.core.RadX.Value = 11.0;
                runner.core.RadY.Value = 42.5;
                runner.core.RdAX.Value = 80.0;
                runner.core.RDAY.Value = 3.0;
                EXPECT_TRUE(Same(*runner.Run(*in, threads), *PlainVGaussian(*in, runner.core)))
                    << "choice " << choice << " aspect " << aspect;
            }
}

TEST(VGaussian, ShowsTheSizesThatHaveAnEffect) {
    const bool showRgb[8] = {false, false, false, true, true, true, true, true};
    const bool showAlpha[8] = {false, false, true, false, false, false, true, false};
    for (int choice = 0; choice < 8; ++choice) { // colour, alpha, synchronous
        VGaussian core;
        FakeInput inputs[7];
        ControlK7* const controls[] = {&core.BRGB, &core.BluA, &core.Sync, &core.RadX,
                                       &core.RadY, &core.RdAX, &core.RDAY};
        for (int i = 0; i < 7; ++i) controls[i]->Input[0] = &inputs[i];
        for (int i = 0; i < 3; ++i) inputs[i].X = choice >> (2 - i) & 1;
        core.RefreshControls();
        EXPECT_EQ(inputs[2].Shown, inputs[1].X == 1.0);
        for (int i : {3, 4}) EXPECT_EQ(inputs[i].Shown, showRgb[choice]) << choice;
        for (int i : {5, 6}) EXPECT_EQ(inputs[i].Shown, showAlpha[choice]) << choice;
    }
}

} // namespace
} // namespace k7::test
