#include "frame/ImageXfmK7.h"

#include "bench/BenchSupport.h"

namespace k7::bench {
namespace {

struct ResizeCore : PluginK7 {
    ImageInputK7 Input;
    ImageOutputK7 Output;
    test::Picture Source;
    void Process() override {
        ImageXfmK7 xfm;
        xfm.SetFilter(ImageXfmK7::kCubic);
        xfm.SetDispatch(this, ImageXfmK7::RunExternalChunks);
        benchmark::DoNotOptimize(xfm.Transfer(Source.get(), Output.Image));
    }
};

/// To 1920 x 1080 from a picture of another size.
template <int width, int height>
void ResizeFrom(benchmark::State& state) {
    RunFrames<ResizeCore>(state, &ResizeCore::Input,
                          [](ResizeCore& core) { core.Source = test::Noise(width, height); });
}
BENCHMARK(ResizeFrom<1280, 720>)->Apply(OneAndAll);
BENCHMARK(ResizeFrom<3840, 2160>)->Apply(OneAndAll);
BENCHMARK(ResizeFrom<1920, 1080>)->Apply(OneAndAll);

} // namespace
} // namespace k7::bench
