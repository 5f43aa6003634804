#include "filters/Trace.h"

#include "tests/support/CoreRunner.h"

#include <limits>

namespace k7::test {
namespace {

/// A mark wherever some of the four corners lie above the level and some do not.
Picture PlainTrace(const K7Image& in, int level, bool over, bool mono) {
    const auto mark = [&](int x, int y, int c) {
        const int u = in.Width == 1 ? x : x + 1 < in.Width ? x + 1 : x - 1;
        const int v = in.Height == 1 ? y : y + 1 < in.Height ? y + 1 : y - 1;
        const auto above = [&](int i, int j) { return in.Rows[j][4 * i + c] > level ? 1 : 0; };
        return (above(x, y) + above(u, y) + above(x, v) + above(u, v)) % 4 ? 32767 : 0;
    };
    return MakePicture(in.Width, in.Height, [&](int x, int y, int c) {
        int word = mark(x, y, c);
        if (mono && c < 3) word = mark(x, y, 0) | mark(x, y, 1) | mark(x, y, 2);
        return over && word == 0 ? static_cast<int>(in.Rows[y][4 * x + c]) : word;
    });
}

Picture RunTrace(K7Image& in, double level, bool over = false, bool mono = false) {
    CoreRunner<Trace> runner;
    runner.core.Leve.Value = level;
    runner.core.Over.Value = over;
    runner.core.TCol.Value = mono ? 2 : 1;
    return runner.Run(in, 3);
}

TEST(Trace, MarksEveryCrossingOnEverySize) {
    const int sizes[][2] = {{1, 1}, {1, 9}, {9, 1}, {2, 2}, {17, 13}, {40, 33}};
    for (const auto& size : sizes)
        for (double percent : {0.0, 31.0, 50.0, 99.9, 100.0})
            for (bool tight : {false, true}) { // words all about the level, on it and a step off
                const int level = static_cast<int>(percent / 100.0 * 32767.0 + 0.5);
                const Picture in = Noise(size[0], size[1]);
                for (int i = 0; tight && i < size[0] * size[1] * 4; ++i)
                    in->Pixels[i] = static_cast<u16>(std::clamp(level - 1 + in->Pixels[i] % 3, 0, 32767));
                for (bool over : {false, true})
                    for (bool mono : {false, true})
                        EXPECT_TRUE(
                            Same(*RunTrace(*in, percent, over, mono), *PlainTrace(*in, level, over, mono)))
                            << size[0] << " x " << size[1] << " level " << percent << " over " << over;
            }
}

TEST(Trace, FloatsOfWordsAreMarkedAsTheWords) {
    const Picture in = Noise(23, 17);
    const auto floats = Floats(*in, 1.0f);
    floats->Pixels[40] = 5.0f * kFullScale; // brighter than white
    for (double percent : {0.0, 31.0, 50.0, 99.9})
        for (bool over : {false, true}) {
            in->Pixels[40] = kFullScale;
            CoreRunner<Trace> runner;
            runner.core.Leve.Value = percent;
            runner.core.Over.Value = over;
            const FloatPicture got = runner.Run(*floats);
            const FloatPicture want = Floats(*RunTrace(*in, percent, over, false));
            if (over && want->Pixels[40] == kFullScale && got->Pixels[40] > kFullScale)
                want->Pixels[40] = floats->Pixels[40];
            EXPECT_TRUE(Same(*got, *want)) << percent;
        }
}

TEST(Trace, LevelsBeyondAllWordsMarkNothing) {
    const Picture in = Noise(11, 9);
    const Picture black = Flat(11, 9, 0);
    for (double level : {-1.0, 100.0, 1e300, -1e300, std::numeric_limits<double>::infinity()})
        EXPECT_TRUE(Same(*RunTrace(*in, level), *black)) << level;
    EXPECT_TRUE(Same(*RunTrace(*in, std::numeric_limits<double>::quiet_NaN()), *RunTrace(*in, 0.0)));
}

} // namespace
} // namespace k7::test
