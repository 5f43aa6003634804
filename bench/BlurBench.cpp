#include "filters/Defocus.h"
#include "filters/Sharpen.h"
#include "filters/VGaussian.h"

#include "bench/BenchSupport.h"

namespace k7::bench {
namespace {

/// Percent of the width, and 2 for rows or 3 for columns.
template <int percent, int direction>
void DefocusConstant(benchmark::State& state) {
    RunFrames<Defocus>(state, &Defocus::Input, [](Defocus& core) {
        core.RadB.Value = percent;
        core.Dire.Value = direction;
    });
}
BENCHMARK(DefocusConstant<0, 2>)->Apply(OneAndAll);
BENCHMARK(DefocusConstant<0, 3>)->Apply(OneAndAll);
BENCHMARK(DefocusConstant<3, 2>)->Apply(OneAndAll);
BENCHMARK(DefocusConstant<3, 3>)->Apply(OneAndAll);
BENCHMARK(DefocusConstant<50, 2>)->Apply(OneAndAll);
BENCHMARK(DefocusConstant<50, 3>)->Apply(OneAndAll);

template <int percent, int direction>
void DefocusExact(benchmark::State& state) {
    RunFrames<Defocus>(state, &Defocus::Input, [](Defocus& core) {
        core.RadB.Value = percent;
        core.Dire.Value = direction;
        core.Mode.Value = 2;
    });
}
BENCHMARK(DefocusExact<3, 2>)->Apply(OneAndAll);
BENCHMARK(DefocusExact<3, 3>)->Apply(OneAndAll);
BENCHMARK(DefocusExact<20, 2>)->Apply(OneAndAll);
BENCHMARK(DefocusExact<20, 3>)->Apply(OneAndAll);

template <int x, int y, bool alpha>
void VGaussianSizes(benchmark::State& state) {
    RunFrames<VGaussian>(state, &VGaussian::Input, [](VGaussian& core) {
        core.BRGB.Value = 1;
        core.BluA.Value = alpha;
        core.RadX.Value = x;
        core.RadY.Value = y;
        core.RdAX.Value = core.RDAY.Value = 5;
    });
}
BENCHMARK(VGaussianSizes<4, 60, false>)->Apply(OneAndAll);
BENCHMARK(VGaussianSizes<200, 200, true>)->Apply(OneAndAll);

template <int radius>
void SharpenRadius(benchmark::State& state) {
    RunFrames<Sharpen>(state, &Sharpen::Input, [](Sharpen& core) {
        core.RadS.Value = radius;
        core.Powe.Value = 5.0;
        core.Iter.Value = 1;
    });
}
BENCHMARK(SharpenRadius<3>)->Apply(OneAndAll);
BENCHMARK(SharpenRadius<10>)->Apply(OneAndAll);
BENCHMARK(SharpenRadius<28>)->Apply(OneAndAll);
BENCHMARK(SharpenRadius<300>)->Apply(OneAndAll);

} // namespace
} // namespace k7::bench
