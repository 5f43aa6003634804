#pragma once

#include "tests/support/CoreRunner.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <thread>

namespace k7::bench {

inline constexpr int kWidth = 1920;
inline constexpr int kHeight = 1080;

/// Measures with one thread and with all of the machine, a number that the benchmark finds in state.range(0):
/// BENCHMARK(Name)->Apply(OneAndAll).
inline void OneAndAll(benchmark::internal::Benchmark* measure) {
    measure->ArgName("threads")->Arg(1)->UseRealTime()->Unit(benchmark::kMillisecond);
    if (const unsigned all = std::thread::hardware_concurrency(); all > 1) measure->Arg(all);
}

/// Reports megapixels a second for pictures of this size.
inline void CountPixels(benchmark::State& state, int width = kWidth, int height = kHeight) {
    const double pixels = static_cast<double>(state.iterations()) * width * height;
    state.counters["MPix/s"] = benchmark::Counter(pixels * 1e-6, benchmark::Counter::kIsRate);
}

/// Runs an effect's Process again and again on noise, on state.range(0) threads. `setUp(core)` gives the
/// settings and may connect further images; `slot` is the input that gets the noise.
template <class Core, class SetUp>
void RunFrames(benchmark::State& state, ImageInputK7 Core::*slot, SetUp setUp) {
    const test::Picture in = test::Noise(kWidth, kHeight);
    const test::Picture out = K7Image::MakeCopy(*in);
    test::CoreRunner<Core> runner;
    runner.owner.Threads = static_cast<int>(state.range(0));
    runner.owner.OnThreads = runner.owner.Threads > 1;
    (runner.core.*slot).Image = in.get();
    runner.core.Output.Image = out.get();
    setUp(runner.core);
    const CurrentChunksScope scope(&runner.chunks);
    for (auto _ : state) runner.core.Process();
    CountPixels(state);
}

} // namespace k7::bench
