#include "lens/FlareSpot.h"

#include "bench/BenchSupport.h"
#include "tests/support/FlareSpotDefaults.h"

namespace k7::bench {
namespace {

template <int lens, int edgeBoost, int more>
void FlareSpotLens(benchmark::State& state) {
    RunFrames<FlareSpot>(state, &FlareSpot::Input, [](FlareSpot& core) {
        test::SetDefaults(core);
        core.LensControl.Value = lens;
        core.EdgeBoostControl.Value = edgeBoost;
        core.MoreControl.Value = more;
    });
}
BENCHMARK(FlareSpotLens<1, 0, 0>)->Apply(OneAndAll);
BENCHMARK(FlareSpotLens<1, 1, 0>)->Apply(OneAndAll);
BENCHMARK(FlareSpotLens<1, 0, 10>)->Apply(OneAndAll);
BENCHMARK(FlareSpotLens<1, 1, 10>)->Apply(OneAndAll);
BENCHMARK(FlareSpotLens<2, 0, 0>)->Apply(OneAndAll);
BENCHMARK(FlareSpotLens<2, 1, 0>)->Apply(OneAndAll);
BENCHMARK(FlareSpotLens<2, 0, 10>)->Apply(OneAndAll);
BENCHMARK(FlareSpotLens<2, 1, 10>)->Apply(OneAndAll);
BENCHMARK(FlareSpotLens<3, 0, 0>)->Apply(OneAndAll);
BENCHMARK(FlareSpotLens<3, 1, 0>)->Apply(OneAndAll);
BENCHMARK(FlareSpotLens<3, 0, 10>)->Apply(OneAndAll);
BENCHMARK(FlareSpotLens<3, 1, 10>)->Apply(OneAndAll);
BENCHMARK(FlareSpotLens<4, 0, 0>)->Apply(OneAndAll);
BENCHMARK(FlareSpotLens<4, 1, 0>)->Apply(OneAndAll);
BENCHMARK(FlareSpotLens<4, 0, 10>)->Apply(OneAndAll);
BENCHMARK(FlareSpotLens<4, 1, 10>)->Apply(OneAndAll);

/// Ghosts that fill the frame, round and soft.
void FlareSpotLarge(benchmark::State& state) {
    RunFrames<FlareSpot>(state, &FlareSpot::Input, [](FlareSpot& core) {
        test::SetDefaults(core);
        core.RadiusControl.Value = 80.0;
        core.SidesControl.Value = 80;
    });
}
BENCHMARK(FlareSpotLarge)->Apply(OneAndAll);

} // namespace
} // namespace k7::bench
