#include "filters/Clean.h"

#include "bench/BenchSupport.h"

namespace k7::bench {
namespace {

template <int window>
void CleanWindow(benchmark::State& state) {
    RunFrames<Clean>(state, &Clean::Input, [](Clean& core) {
        InDepth(core.Input, core.Output, [](auto& in, auto&) { in.WidthScale = 1.0f; });
        core.XRad.Value = core.YRad.Value = window;
    });
}
BENCHMARK(CleanWindow<3>)->Apply(OneAndAll);
BENCHMARK(CleanWindow<5>)->Apply(OneAndAll);
BENCHMARK(CleanWindow<15>)->Apply(OneAndAll);
BENCHMARK(CleanWindow<51>)->Apply(OneAndAll);

} // namespace
} // namespace k7::bench
