#include "filters/Clean.h"
#include "filters/Defocus.h"
#include "filters/Dither.h"
#include "filters/Sharpen.h"
#include "filters/Trace.h"
#include "filters/VGaussian.h"

#include "baselib/HeapMonitor.h"
#include "bench/BenchSupport.h"

namespace k7::bench {
namespace {

// The cost of a pixel over the size of the picture, at settings that do not follow it.

void OneAtEachSize(benchmark::internal::Benchmark* measure) {
    measure->ArgNames({"threads", "width", "height"})->UseRealTime()->Unit(benchmark::kMillisecond);
    const int sizes[][2] = {{1280, 720}, {1920, 1080}, {3840, 2160}, {8192, 4320}};
    for (const auto& size : sizes) measure->Args({1, size[0], size[1]});
}

/// The most that a frame allocates beside its pictures.
template <class Core>
double PeakBytes(Core& core) {
    hm_enabled = hm_tracking = 1;
    hm_normal.PeakBytes = hm_image.PeakBytes = 0;
    core.Process();
    hm_enabled = hm_tracking = 0;
    return static_cast<double>(hm_normal.PeakBytes + hm_image.PeakBytes);
}

template <class Core>
void AtSize(benchmark::State& state, void (*setUp)(Core&)) {
    const int width = static_cast<int>(state.range(1)), height = static_cast<int>(state.range(2));
    const double pixels = static_cast<double>(width) * height;
    const test::Picture in = test::Noise(width, height);
    in->WidthScale = 1.0f; // radii in pixels
    double bytes = 0;
    RunFramesOf<u16, Core>(state, &Core::Input, *in, [&](Core& core) {
        setUp(core);
        bytes = PeakBytes(core);
    });
    using benchmark::Counter;
    state.counters["ns/pixel"] =
        Counter(pixels * 1e-9, Counter::kIsIterationInvariantRate | Counter::kInvert);
    state.counters["bytes/pixel"] = bytes / pixels;
}

BENCHMARK_CAPTURE(
    AtSize, CleanWindow15, +[](Clean& core) { core.XRad.Value = core.YRad.Value = 15; })
    ->Apply(OneAtEachSize);
BENCHMARK_CAPTURE(
    AtSize, DefocusConstant,
    +[](Defocus& core) {
        core.RadB.Value = 3;
        core.Dire.Value = 1;
    })
    ->Apply(OneAtEachSize);
BENCHMARK_CAPTURE(
    AtSize, DitherRadius1, +[](Dither& core) { core.Radius.Value = 1; })
    ->Apply(OneAtEachSize);
BENCHMARK_CAPTURE(
    AtSize, SharpenRadius10,
    +[](Sharpen& core) {
        core.RadS.Value = 10;
        core.Powe.Value = 5.0;
        core.Iter.Value = 1;
    })
    ->Apply(OneAtEachSize);
BENCHMARK_CAPTURE(
    AtSize, TraceDefault, +[](Trace& core) { core.Leve.Value = 50.0; })
    ->Apply(OneAtEachSize);
BENCHMARK_CAPTURE(
    AtSize, VGaussianDefault,
    +[](VGaussian& core) {
        core.BRGB.Value = 1;
        core.RadX.Value = 4;
        core.RadY.Value = 60;
    })
    ->Apply(OneAtEachSize);

} // namespace
} // namespace k7::bench
