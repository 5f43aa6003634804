#include "lens/Flare.h"
#include "lens/Flare2.h"

#include "bench/BenchSupport.h"
#include "tests/support/FlareDefaults.h"

namespace k7::bench {
namespace {

/// A frame with `lights` lights in a square around the middle, all else dark.
template <class Core>
void FramesWithLights(benchmark::State& state, int lights, void (*change)(Core&) = nullptr) {
    int side = 1;
    while (side * side < lights) ++side;
    const int left = (kWidth - side) / 2;
    const int bottom = (kHeight - side) / 2;
    const test::Picture map = test::MakePicture(kWidth, kHeight, [&](int x, int y, int) {
        return x >= left && x < left + side && y >= bottom && y < bottom + side ? 32767 : 0;
    });
    const test::FloatPicture floats = test::Floats(*map);
    RunFrames<Core>(state, &Core::Background, [&](Core& core) {
        test::SetDefaults(core);
        core.LightInput.Image = map.get();
        core.LightInput.Floats = floats.get();
        if (change) change(core);
    });
}

void WholeFrame(Flare& core) {
    core.LightMapOnly.Value = 0;
    core.Centre.Value = {0.5, 0.5};
    core.ScaleX.Value = 2.0;
}

template <int lights>
void FlareLights(benchmark::State& state) {
    FramesWithLights<Flare>(state, lights, WholeFrame);
}
BENCHMARK(FlareLights<1>)->Apply(OneAndAll);
BENCHMARK(FlareLights<100>)->Apply(OneAndAll);
BENCHMARK(FlareLights<10000>)->Apply(OneAndAll);

void Flare2Defaults(benchmark::State& state) {
    FramesWithLights<Flare2>(state, 0);
}
BENCHMARK(Flare2Defaults)->Apply(OneAndAll);

/// 81 lights, 300 long streaks each, and ghosts.
void Flare2Large(benchmark::State& state) {
    FramesWithLights<Flare2>(state, 0, [](Flare2& core) {
        core.Boost.Value = 9;
        core.Streaks.Value = 300;
        core.StreakLength.Value = 220;
        core.Reflections.Value = 5;
    });
}
BENCHMARK(Flare2Large)->Apply(OneAndAll);

/// The tables of Flare2 at its defaults, computed again each time.
void FlareTablesAnew(benchmark::State& state) {
    for (auto _ : state) {
        FlareTables<float> tables;
        CLRK7 clr;
        Ran1 random;
        random.Seed(-1);
        benchmark::DoNotOptimize(tables.MakeHalo(clr, {0.1875f, 10.0f, 100, 0.5f, 1.0f}, random));
        benchmark::DoNotOptimize(tables.MakeStreaks(clr, {400, 200, 50.0f, 0.05f}));
        benchmark::DoNotOptimize(tables.MakeGlow({106.7f, 50.0f, 1.0f}, random));
    }
}
BENCHMARK(FlareTablesAnew)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace k7::bench
