#include "filters/DBlur.h"

#include "bench/BenchSupport.h"
#include "filters/BlurKernel.h"

#include <vector>

namespace k7::bench {
namespace {

template <int length, int angle>
void Streak(benchmark::State& state) {
    RunFrames<DBlur>(state, &DBlur::Input, [](DBlur& core) {
        core.Leng.Value = length;
        core.Angl.Value = angle;
        core.Cent.Value = 1;
    });
}
BENCHMARK(Streak<10, 0>)->Apply(OneAndAll);
BENCHMARK(Streak<10, 90>)->Apply(OneAndAll);
BENCHMARK(Streak<10, 45>)->Apply(OneAndAll);
BENCHMARK(Streak<100, 45>)->Apply(OneAndAll);

/// The kernel of a streak as long as a frame of 4096 pixels is wide.
template <int angle>
void StreakKernel(benchmark::State& state) {
    constexpr int capacity = 4095;
    std::vector<BlurKernel> kernel(capacity);
    for (auto _ : state) {
        int count;
        MakeBlurKernel(1.0f, angle, capacity, 1, &count, kernel.data());
        benchmark::DoNotOptimize(kernel.data());
    }
}
BENCHMARK(StreakKernel<0>)->Unit(benchmark::kMillisecond);
BENCHMARK(StreakKernel<45>)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace k7::bench
