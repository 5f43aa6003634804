#include "motion/MoBlur.h"

#include "bench/BenchSupport.h"
#include "tests/motion/MotionPictures.h"

#include <algorithm>

namespace k7::bench {
namespace {

enum Motion { kStill, kPan, kMixed };

/// Two frames of a scene.
struct Scene : FrameSource {
    explicit Scene(Motion motion) {
        const test::Picture wide = test::Blobs(kWidth + 64, kHeight + 32, 3);
        previous = test::Window(*wide, 0, 0, kWidth, kHeight);
        const test::Picture panned = test::Window(*wide, 23, 9, kWidth, kHeight);
        current = test::MakePicture(kWidth, kHeight, [&](int x, int y, int c) {
            // Mixed: a disc in the middle, half as wide as the frame is high, moves over a still background.
            const int u = x - kWidth / 2, v = y - kHeight / 2;
            const bool moves = motion == kPan || (motion == kMixed && u * u + v * v < kHeight * kHeight / 16);
            return (moves ? *panned : *previous).Rows[y][4 * x + c];
        });
    }
    bool ReadInputAtTime(double, K7Image& target) override { return Read(target); }
    bool ReadInputAtTime(double, FloatImageK7& target) override { return Read(target); }

    template <class Sample>
    bool Read(PictureK7<Sample>& target) const {
        std::copy_n(previous->Pixels, kWidth * kHeight * target.Channels, target.Pixels);
        return true;
    }
    test::Picture previous;
    test::Picture current;
};

Scene& SceneOf(Motion motion) {
    static Scene scenes[] = {Scene(kStill), Scene(kPan), Scene(kMixed)};
    return scenes[motion];
}

/// The default region is half as wide as the frame; `whole` searches all of it.
MotionSearch Region(bool whole) {
    if (whole) return {2.5f, 655.34f, 0, kWidth - 1, 0, kHeight - 1};
    return {2.5f, 655.34f, kWidth / 4, kWidth * 3 / 4, kHeight / 2 - kWidth / 4, kHeight / 2 + kWidth / 4};
}

struct Threads : test::CoreRunner<test::EmptyCore> {
    explicit Threads(benchmark::State& state) {
        owner.Threads = static_cast<int>(state.range(0));
        owner.OnThreads = true;
    }
};

template <Motion motion, bool whole>
void MotionEstimate(benchmark::State& state) {
    Threads threads(state);
    const Scene& scene = SceneOf(motion);
    MotionEstimator estimator;
    if (!estimator.MakeBuffers(kWidth, kHeight)) return state.SkipWithError("no memory");
    const CurrentChunksScope scope(&threads.chunks);
    for (auto _ : state)
        estimator.EstimateMotion(threads.core, *scene.previous, *scene.current, Region(whole));
    CountPixels(state);
}
BENCHMARK(MotionEstimate<kStill, true>)->Apply(ThreadsOnly);
BENCHMARK(MotionEstimate<kPan, false>)->Apply(ThreadsOnly);
BENCHMARK(MotionEstimate<kPan, true>)->Apply(ThreadsOnly);
BENCHMARK(MotionEstimate<kMixed, true>)->Apply(ThreadsOnly);

template <Motion motion, int steps>
void MotionRender(benchmark::State& state) {
    Threads threads(state);
    const Scene& scene = SceneOf(motion);
    MotionEstimator estimator;
    BlurRenderer renderer;
    const test::Picture output = K7Image::Make(kWidth, kHeight);
    if (!estimator.MakeBuffers(kWidth, kHeight) || !renderer.MakeBuffers(kWidth, kHeight, 0))
        return state.SkipWithError("no memory");
    const CurrentChunksScope scope(&threads.chunks);
    const MotionField* field =
        estimator.EstimateMotion(threads.core, *scene.previous, *scene.current, Region(true));
    for (auto _ : state)
        renderer.RenderBlur(threads.core, *output, *scene.previous, *scene.current, *field,
                            {steps + 1, 1.0f, 1.0f, 1.0f});
    CountPixels(state);
}
BENCHMARK(MotionRender<kStill, 5>)->Apply(ThreadsOnly);
BENCHMARK(MotionRender<kPan, 5>)->Apply(ThreadsOnly);
BENCHMARK(MotionRender<kMixed, 5>)->Apply(ThreadsOnly);
BENCHMARK(MotionRender<kPan, 40>)->Apply(ThreadsOnly);

template <Motion motion>
void MoBlurFrame(benchmark::State& state) {
    RunFrames<MoBlur>(state, &MoBlur::ImageInput, [](MoBlur& core) {
        Scene& scene = SceneOf(motion);
        core.ImageInput.Image = scene.current.get();
        core.ImageInput.Input = &scene;
        core.Time = 1.0;
        core.ExtentEnd = 2.0;
        core.ApplyMotionBlur.Value = 1;
        core.MaxSteps.Value = 5;
        core.Threshold.Value = 2.0;
        core.LengthScale.Value = core.StartWeight.Value = core.EndWeight.Value = 1.0;
        core.PreBlur.Value = 2.5;
        core.Centre.Value = {0.5, 0.5};
        core.ScaleX.Value = core.ScaleY.Value = 0.5;
    });
}
BENCHMARK(MoBlurFrame<kStill>)->Apply(OneAndAll);
BENCHMARK(MoBlurFrame<kPan>)->Apply(OneAndAll);
BENCHMARK(MoBlurFrame<kMixed>)->Apply(OneAndAll);

} // namespace
} // namespace k7::bench
