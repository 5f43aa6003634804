#include "filters/Dither.h"
#include "filters/Trace.h"

#include "bench/BenchSupport.h"

namespace k7::bench {
namespace {

/// Hundredths of the control's unit.
template <int hundredths>
void DitherRadius(benchmark::State& state) {
    RunFrames<Dither>(state, &Dither::Input, [](Dither& core) { core.Radius.Value = hundredths / 100.0; });
}
BENCHMARK(DitherRadius<15>)->Apply(OneAndAll);
BENCHMARK(DitherRadius<1000>)->Apply(OneAndAll);

template <bool over, bool mono>
void TraceLines(benchmark::State& state) {
    RunFrames<Trace>(state, &Trace::Input, [](Trace& core) {
        core.Leve.Value = 50.0;
        core.Over.Value = over;
        core.TCol.Value = mono ? 2 : 1;
    });
}
BENCHMARK(TraceLines<false, false>)->Apply(OneAndAll);
BENCHMARK(TraceLines<true, true>)->Apply(OneAndAll);

} // namespace
} // namespace k7::bench
