#include "filters/VGaussian.h"

#include "tests/support/CoreRunner.h"
#include "tests/support/FakeInput.h"

#include <limits>

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

TEST(VGaussian, LeavesAlphaAloneWhenAsked) {
    const Picture in = Noise(16, 15);
    CoreRunner<VGaussian> runner;
    runner.core.BRGB.Value = runner.core.BluA.Value = runner.core.Sync.Value = 1;
    runner.core.RadX.Value = runner.core.RadY.Value = 30.0;
    const Picture want = runner.Run(*in);
    want->CopyAlpha(in.get());
    runner.core.ProcessAlpha = false;
    EXPECT_TRUE(Same(*runner.Run(*in), *want));
}

TEST(VGaussian, HostileSizesGiveAFrame) {
    const Picture in = Noise(5, 4);
    for (double size : {-1e300, -50.0, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
        CoreRunner<VGaussian> runner;
        runner.core.BRGB.Value = 1;
        runner.core.RadX.Value = runner.core.RadY.Value = size;
        const Picture out = runner.Run(*in);
        for (int i = 0; i < 5 * 4 * 4; ++i) EXPECT_LE(out->Pixels[i], kFullScale);
    }
}

TEST(VGaussian, ShowsTheSizesThatHaveAnEffect) {
    const struct {
        bool rgb, alpha, sync, showRgb, showAlpha;
    } rows[] = {
        {false, false, false, false, false}, {false, false, true, false, false},
        {false, true, false, false, true},   {false, true, true, true, false},
        {true, false, false, true, false},   {true, false, true, true, false},
        {true, true, false, true, true},     {true, true, true, true, false},
    };
    for (const auto& row : rows) {
        VGaussian core;
        FakeInput inputs[7];
        ControlK7* const controls[] = {&core.BRGB, &core.BluA, &core.Sync, &core.RadX,
                                       &core.RadY, &core.RdAX, &core.RDAY};
        for (int i = 0; i < 7; ++i) controls[i]->Input[0] = &inputs[i];
        inputs[0].X = row.rgb;
        inputs[1].X = row.alpha;
        inputs[2].X = row.sync;
        core.RefreshControls();
        EXPECT_EQ(inputs[2].Shown, row.alpha);
        for (int i : {3, 4}) EXPECT_EQ(inputs[i].Shown, row.showRgb) << row.rgb << row.alpha << row.sync;
        for (int i : {5, 6}) EXPECT_EQ(inputs[i].Shown, row.showAlpha) << row.rgb << row.alpha << row.sync;
    }
}

} // namespace
} // namespace k7::test
