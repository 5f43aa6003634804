#include "filters/CrashZoom.h"

#include "bench/BenchSupport.h"

namespace k7::bench {
namespace {

template <int speed, int samples>
void ZoomSpeed(benchmark::State& state) {
    RunFrames<CrashZoom>(state, &CrashZoom::Input, [](CrashZoom& core) {
        core.Cntr.Value = {0.5, 0.5};
        core.DimX.Value = 0.4;
        core.Spee.Value = speed;
        core.Samp.Value = samples;
    });
}
BENCHMARK(ZoomSpeed<10, 1>)->Apply(OneAndAll);
BENCHMARK(ZoomSpeed<100, 1>)->Apply(OneAndAll);
BENCHMARK(ZoomSpeed<100, 4>)->Apply(OneAndAll);
BENCHMARK(ZoomSpeed<1000000000, 4>)->Apply(OneAndAll);

} // namespace
} // namespace k7::bench
