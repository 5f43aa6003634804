#pragma once

#include "tests/support/CoreRunner.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <thread>

namespace k7::bench {

inline constexpr int kWidth = 1920;
inline constexpr int kHeight = 1080;

/// Measures words and floats, with one thread and with all of the machine: state.range(0) is the number of
/// threads, state.range(1) is 1 for floats. Use: BENCHMARK(Name)->Apply(OneAndAll).
inline void OneAndAll(benchmark::internal::Benchmark* measure) {
    measure->ArgNames({"threads", "floats"})->UseRealTime()->Unit(benchmark::kMillisecond);
    const int all = static_cast<int>(std::thread::hardware_concurrency());
    for (int threads : {1, all})
        if (threads == 1 || all > 1)
            for (int floats : {0, 1}) measure->Args({threads, floats});
}

/// The same for work that knows one depth only.
inline void ThreadsOnly(benchmark::internal::Benchmark* measure) {
    measure->ArgNames({"threads"})->UseRealTime()->Unit(benchmark::kMillisecond);
    const int all = static_cast<int>(std::thread::hardware_concurrency());
    measure->Args({1});
    if (all > 1) measure->Args({all});
}

/// Reports megapixels per second for pictures of this size.
inline void CountPixels(benchmark::State& state, int width = kWidth, int height = kHeight) {
    const double pixels = static_cast<double>(state.iterations()) * width * height;
    state.counters["MPix/s"] = benchmark::Counter(pixels * 1e-6, benchmark::Counter::kIsRate);
}

template <class Sample, class Core, class SetUp>
void RunFramesOf(benchmark::State& state, ImageInputK7 Core::*slot, PictureK7<Sample>& in, SetUp setUp) {
    const auto out = PictureK7<Sample>::MakeCopy(in);
    test::CoreRunner<Core> runner;
    runner.owner.Threads = static_cast<int>(state.range(0));
    runner.owner.OnThreads = runner.owner.Threads > 1;
    (runner.core.*slot).template Of<Sample>() = &in;
    runner.core.Output.template Of<Sample>() = out.get();
    setUp(runner.core);
    const CurrentChunksScope scope(&runner.chunks);
    for (auto _ : state) runner.core.Process();
    CountPixels(state, in.Width, in.Height);
}

/// Runs an effect's Process repeatedly on noise. `setUp(core)` sets the controls and may connect further
/// images; `slot` is the input that gets the noise.
template <class Core, class SetUp>
void RunFrames(benchmark::State& state, ImageInputK7 Core::*slot, SetUp setUp) {
    const test::Picture in = test::Noise(kWidth, kHeight);
    if (state.range(1))
        RunFramesOf(state, slot, *test::Floats(*in), setUp);
    else
        RunFramesOf(state, slot, *in, setUp);
}

} // namespace k7::bench
