#include "library/GaussianKernel.h"
#include "library/K7Image.h"

#include "tests/support/Pictures.h"

#include <cmath>
#include <numeric>
#include <vector>

namespace k7::test {
namespace {

std::vector<std::uint32_t> Weights(float radius) {
    const GaussianKernel1D kernel = MakeGaussianKernel1D(radius);
    return {kernel.Weights.begin(), kernel.Weights.begin() + kernel.Taps};
}

TEST(GaussianKernel1D, HasTheWorkedWeights) {
    using Table = std::vector<std::uint32_t>;
    EXPECT_EQ(Weights(1.0f), (Table{712, 64112, 712}));
    EXPECT_EQ(Weights(2.0f), (Table{435, 12728, 39210, 12728, 435}));
    EXPECT_EQ(Weights(3.0f), (Table{290, 3539, 15862, 26154, 15862, 3539, 290}));
    for (float radius : {-3.0f, 0.0f, 0.01f, 0.5f, 1e5f, 1e9f, INFINITY, std::nanf("")})
        EXPECT_EQ(Weights(radius), Table{65536}) << radius;
}

TEST(GaussianKernel1D, IsSymmetricAndAddsUpAtEveryRadius) {
    for (float radius : {0.7f, 1.3f, 2.5f, 57.6f, 480.0f, 5000.0f, 60000.0f, 99999.0f}) {
        const std::vector<std::uint32_t> weights = Weights(radius);
        EXPECT_EQ(weights.size() % 2, 1u) << radius;
        EXPECT_EQ(std::accumulate(weights.begin(), weights.end(), std::uint64_t{0}), 65536u) << radius;
        EXPECT_TRUE(std::equal(weights.begin(), weights.end(), weights.rbegin())) << radius;
    }
    const std::vector<std::uint32_t> last = Weights(99999.0f); // the largest radius that is worked out
    EXPECT_EQ(last[last.size() / 2], 65536u);
}

/// One pass as it is defined: every tap of every pixel tested against the ends of the line.
Picture PlainPass(const K7Image& from, const K7Image& into, float radius, bool dupEdges, bool columns,
                  int channels) {
    const std::vector<std::uint32_t> weights = Weights(radius);
    const int half = static_cast<int>(weights.size() / 2);
    return MakePicture(from.Width, from.Height, [&](int x, int y, int c) {
        if (c >= channels) return static_cast<int>(into.Rows[y][4 * x + c]);
        const int at = columns ? y : x;
        const int length = columns ? from.Height : from.Width;
        std::uint32_t sum = 0;
        for (int k = -half; k <= half; ++k) {
            int n = at + k;
            if (dupEdges) n = std::clamp(n, 0, length - 1);
            if (n < 0 || n >= length) continue;
            sum += weights[static_cast<std::size_t>(half + k)] *
                   (columns ? from.Rows[n][4 * x + c] : from.Rows[y][4 * n + c]);
        }
        return static_cast<int>(sum >> 16);
    });
}

TEST(GaussianExact, IsTheSumOfEveryTapOnEverySize) {
    const int sizes[][2] = {{1, 1}, {1, 9}, {9, 1}, {3, 2}, {17, 13}, {33, 40}};
    for (const auto& size : sizes)
        for (float radius :
             {0.0f, 1.0f, 2.0f, 3.0f, 7.3f, 15.0f, 16.0f, 17.0f, 100.0f, 3000.0f, 40000.0f, 1e9f})
            for (bool dupEdges : {false, true})
                for (int direction : {0, 1}) {
                    if (radius == 40000.0f && size[0] * size[1] > 9) continue; // the plain way takes its time
                    const bool alpha = size[0] % 2;
                    const Picture in = Noise(size[0], size[1]);
                    const Picture out = Noise(size[0], size[1], 2);
                    const Picture want =
                        PlainPass(*in, *out, radius, dupEdges, direction == 1, alpha ? 4 : 3);
                    out->GaussianExact(radius, dupEdges, in.get(), direction, alpha);
                    EXPECT_TRUE(Same(*out, *want)) << size[0] << " x " << size[1] << " radius " << radius
                                                   << " dup " << dupEdges << " direction " << direction;
                }
}

TEST(GaussianExact, FadesTowardsTheBorderOrRepeatsTheEdge) {
    const Picture flat = Flat(40, 9, 32767);
    const Picture out = K7Image::MakeCopy(*flat);
    out->GaussianExact(3.0f, false, flat.get(), 0, true);
    EXPECT_EQ(out->Rows[4][0], (26154 + 15862 + 3539 + 290) * 32767ll / 65536);
    EXPECT_EQ(out->Rows[4][4 * 20], 32767);
    for (float radius : {0.3f, 2.0f, 30.0f, 500.0f}) {
        out->GaussianExact(radius, true, flat.get(), 2, true);
        EXPECT_TRUE(Same(*out, *flat)) << radius;
    }
}

TEST(GaussianExact, BothDirectionsAreRowsThenColumnsAlsoInPlace) {
    const Picture in = Noise(23, 19);
    const Picture want = PlainPass(*PlainPass(*in, *in, 4.0f, true, false, 3), *in, 4.0f, true, true, 3);
    const Picture from = K7Image::MakeCopy(*in);
    from->GaussianExact(4.0f, true, in.get(), 2, false);
    EXPECT_TRUE(Same(*from, *want));
    const Picture inPlace = K7Image::MakeCopy(*in);
    inPlace->GaussianExact(4.0f, true, nullptr, 2, false);
    EXPECT_TRUE(Same(*inPlace, *want));
    inPlace->GaussianExact(4.0f, true, nullptr, 3, false);
    EXPECT_TRUE(Same(*inPlace, *want)) << "any other direction does nothing";
}

} // namespace
} // namespace k7::test
