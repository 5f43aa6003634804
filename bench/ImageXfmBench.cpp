#include "frame/ImageXfmK7.h"

#include "bench/BenchSupport.h"

namespace k7::bench {
namespace {

struct ResizeCore : PluginK7 {
    ImageInputK7 Input;
    ImageOutputK7 Output;
    test::Picture Words;
    test::FloatPicture Floats;
    void Process() override {
        ImageXfmK7 xfm;
        xfm.SetFilter(ImageXfmK7::kCubic);
        xfm.SetDispatch(this, ImageXfmK7::RunExternalChunks);
        benchmark::DoNotOptimize(Output.Floats ? xfm.Transfer<float>(Floats.get(), Output.Floats)
                                               : xfm.Transfer<u16>(Words.get(), Output.Image));
    }
};

/// To 1920 x 1080 from a picture of another size.
template <int width, int height>
void ResizeFrom(benchmark::State& state) {
    RunFrames<ResizeCore>(state, &ResizeCore::Input, [](ResizeCore& core) {
        core.Words = test::Noise(width, height);
        core.Floats = test::Floats(*core.Words);
    });
}
BENCHMARK(ResizeFrom<1280, 720>)->Apply(OneAndAll);
BENCHMARK(ResizeFrom<3840, 2160>)->Apply(OneAndAll);
BENCHMARK(ResizeFrom<1920, 1080>)->Apply(OneAndAll);

} // namespace
} // namespace k7::bench
