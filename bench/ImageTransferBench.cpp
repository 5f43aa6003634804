#include "frame/adapter/ImageTransfer.h"

#include "bench/BenchSupport.h"
#include "host/Image.h"

namespace k7::bench {
namespace {

host::Ref<host::Image> HostNoise(host::Depth depth, host::Planes planes) {
    const host::Ref<host::Image> like(host::Image::Make(kWidth, kHeight, depth, planes));
    return host::Ref<host::Image>(K7ImageToHost(*like, *test::Noise(kWidth, kHeight)));
}

/// A host image becomes a picture of the effects, as every input does on every frame.
template <class Sample, host::Depth depth, host::Planes planes>
void FromHost(benchmark::State& state) {
    const host::Ref<host::Image> source = HostNoise(depth, planes);
    for (auto _ : state) benchmark::DoNotOptimize(HostToK7Image<Sample>(source.get()));
    CountPixels(state);
}

/// And back, as every output does.
template <class Sample, host::Depth depth, host::Planes planes>
void ToHost(benchmark::State& state) {
    const host::Ref<host::Image> like = HostNoise(depth, planes);
    const auto source = HostToK7Image<Sample>(like.get());
    for (auto _ : state) {
        const host::Ref<host::Image> image(K7ImageToHost(*like, *source));
        benchmark::DoNotOptimize(image.get());
    }
    CountPixels(state);
}

using host::Depth;
using host::Planes;
BENCHMARK(FromHost<u16, Depth::Int8, Planes::One>)->Unit(benchmark::kMillisecond);
BENCHMARK(FromHost<u16, Depth::Int16, Planes::One>)->Unit(benchmark::kMillisecond);
BENCHMARK(FromHost<u16, Depth::Int16, Planes::Two>)->Unit(benchmark::kMillisecond);
BENCHMARK(FromHost<float, Depth::Half, Planes::One>)->Unit(benchmark::kMillisecond);
BENCHMARK(FromHost<float, Depth::Float, Planes::One>)->Unit(benchmark::kMillisecond);
BENCHMARK(ToHost<u16, Depth::Int8, Planes::One>)->Unit(benchmark::kMillisecond);
BENCHMARK(ToHost<u16, Depth::Int16, Planes::One>)->Unit(benchmark::kMillisecond);
BENCHMARK(ToHost<u16, Depth::Int16, Planes::Two>)->Unit(benchmark::kMillisecond);
BENCHMARK(ToHost<float, Depth::Half, Planes::One>)->Unit(benchmark::kMillisecond);
BENCHMARK(ToHost<float, Depth::Float, Planes::One>)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace k7::bench
