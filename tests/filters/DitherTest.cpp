#include "filters/Dither.h"

#include "frame/Random.h"
#include "tests/support/CoreRunner.h"

#include <cmath>

namespace k7::test {
namespace {

/// The scatter of one chunk, pixel by pixel, with the seed worked out by the caller.
void PlainChunk(const K7Image& in, const K7Image& out, int first, int last, std::uint32_t seed, int spreadX,
                int spreadY, int direction, bool dupEdges) {
    for (int y = first; y <= last; ++y)
        for (int x = 0; x < in.Width; ++x) {
            int u = x;
            int v = y;
            if (direction != 3) u += (Rand15(&seed) * spreadX >> 15) - spreadX / 2;
            if (direction != 2) v += (Rand15(&seed) * spreadY >> 15) - spreadY / 2;
            if (dupEdges) u = std::clamp(u, 0, in.Width - 1);
            if (dupEdges) v = std::clamp(v, 0, in.Height - 1);
            const bool inside = u >= 0 && v >= 0 && u < in.Width && v < in.Height;
            for (int c = 0; c < 4; ++c) out.Rows[y][4 * x + c] = inside ? in.Rows[v][4 * u + c] : u16{0};
        }
}

TEST(Dither, FloatsTakeTheSameWayAsWordsAndKeepTheirValues) {
    const Picture in = Noise(50, 21);
    for (float gain : {1.0f, 8.0f, -1.0f}) {
        CoreRunner<Dither> runner;
        runner.core.Radius.Value = 1.5;
        const Picture words = runner.Run(*in, 2);
        EXPECT_TRUE(Same(*runner.Run(*Floats(*in, gain), 2), *Floats(*words, gain)));
    }
}

TEST(Dither, ScattersEveryChunkFromTheSameSeed) {
    const Picture in = Noise(50, 21);
    in->AspectX = 2.0;
    for (int threads : {1, 2, 4})
        for (int direction : {1, 2, 3})
            for (bool dupEdges : {false, true}) {
                CoreRunner<Dither> runner;
                runner.core.Time = 3.0;
                runner.core.Radius.Value = 1.5; // 7.5 pixels, 15 along columns by the aspect
                runner.core.DiRe.Value = direction;
                runner.core.DpEd.Value = dupEdges;
                const Picture want = K7Image::MakeCopy(*in);
                const int per = 21 / threads;
                for (int chunk = 0; chunk < threads; ++chunk)
                    PlainChunk(*in, *want, per * chunk, chunk == threads - 1 ? 20 : per * chunk + per - 1,
                               3703701u, 7, 15, direction, dupEdges);
                EXPECT_TRUE(Same(*runner.Run(*in, threads), *want))
                    << "threads " << threads << " direction " << direction << " dup " << dupEdges;
            }
}

TEST(Dither, OnlyThePartsOfTheFrameShowAndNotWhoWorksOnThem) {
    const Picture in = Noise(33, 21);
    for (int parts : {1, 2, 3, 30})
        for (int direction : {1, 2, 3}) {
            CoreRunner<Dither> runner;
            runner.core.Radius.Value = 1.5;
            runner.core.DiRe.Value = direction;
            const Picture want = runner.Run(*in, parts);
            runner.owner.Parts = parts;
            for (int threads : {1, 2, 5, 40})
                EXPECT_TRUE(Same(*runner.Run(*in, threads), *want)) << parts << " parts on " << threads;
        }
}

TEST(Dither, PatternGoesOnChangingLateInTheClip) {
    const Picture in = Noise(40, 20);
    const auto at = [&](double time) {
        CoreRunner<Dither> runner;
        runner.core.Time = time;
        runner.core.Radius.Value = 2.0;
        return runner.Run(*in);
    };
    EXPECT_TRUE(Same(*at(5000.0), *at(5000.0)));
    for (double time : {5.0, 1738.0, 1739.0, 5000.0, 1e6, -3.0})
        EXPECT_FALSE(Same(*at(time), *at(time + 1.0))) << time;

    EXPECT_TRUE(Same(*at(HUGE_VAL), *at(0.0)));
    const Picture want = K7Image::MakeCopy(*in);
    PlainChunk(*in, *want, 0, 19, static_cast<std::uint32_t>(6172835000ull), 8, 8, 1, false);
    EXPECT_TRUE(Same(*at(5000.0), *want)) << "5000 x 1234567 modulo 2^32";
}

TEST(Dither, RadiiBelowAPixelChangeNothing) {
    const Picture in = Noise(20, 10);
    CoreRunner<Dither> runner;
    for (double radius : {0.0, 0.4, -0.4, std::nan("")}) {
        runner.core.Radius.Value = radius;
        EXPECT_TRUE(Same(*runner.Run(*in), *in)) << radius;
    }
}

} // namespace
} // namespace k7::test
