#include "library/K7Image.h"

#include "tests/library/Dispatch.h"

#include <cmath>
#include <limits>
#include <vector>

namespace k7::test {
namespace {

/// One line as the filter is defined: padded, forward and backward from zero, in double.
std::vector<int> PlainLine(const std::vector<int>& words, double sigma) {
    double q = sigma * 2.0 * 0.3834085807;
    if (sigma >= 0.5) q = 3.97156 - 4.14554 * std::sqrt(1.0 - sigma * 0.26891);
    if (sigma >= 2.5) q = sigma * 0.98711 - 0.9633;
    const double b0 = 1.57825 + 2.44413 * q + 1.4281 * (q * q) + 0.422205 * (q * q * q);
    const double c1 = (2.44413 * q + 2.85619 * (q * q) + 1.26661 * (q * q * q)) / b0;
    const double c2 = (-1.4281 * (q * q) - 1.26661 * (q * q * q)) / b0;
    const double c3 = 0.422205 * (q * q * q) / b0;
    const double B = 1.0 - (c1 + c2 + c3);

    const int pad = std::max(static_cast<int>(sigma) + 4, 0);
    const int n = static_cast<int>(words.size());
    const int length = n + 3 * pad;
    std::vector<double> in, forward(static_cast<std::size_t>(length)), backward(forward);
    for (int i = 0; i < length; ++i)
        in.push_back(words[static_cast<std::size_t>(std::clamp(i - pad, 0, n - 1))]);
    for (std::size_t i = 3; i < in.size(); ++i)
        forward[i] = B * in[i] + c1 * forward[i - 1] + c2 * forward[i - 2] + c3 * forward[i - 3];
    for (int k = length - 4; k >= 0; --k) {
        const auto i = static_cast<std::size_t>(k);
        backward[i] = B * forward[i] + c1 * backward[i + 1] + c2 * backward[i + 2] + c3 * backward[i + 3];
    }
    std::vector<int> result;
    for (int i = 0; i < n; ++i) {
        const double value = backward[static_cast<std::size_t>(pad + i)];
        // To the nearest 1/65536 first, then down to the whole word.
        const double held = std::isnan(value) ? 0.0 : std::clamp(value, 0.0, 32767.0);
        result.push_back(static_cast<int>(std::floor(std::nearbyint(held * 65536.0) / 65536.0)));
    }
    return result;
}

/// `into` with channels from `first` to `end` - 1 of `from` filtered along one axis.
Picture PlainPass(const K7Image& from, const K7Image& into, float radius, bool columns, int first, int end) {
    Picture out = K7Image::MakeCopy(into);
    const int lines = columns ? from.Width : from.Height;
    const int length = columns ? from.Height : from.Width;
    const auto word = [&](const K7Image& image, int line, int n, int c) -> u16& {
        return columns ? image.Rows[n][4 * line + c] : image.Rows[line][4 * n + c];
    };
    for (int line = 0; line < lines; ++line)
        for (int c = first; c < end; ++c) {
            std::vector<int> words;
            for (int n = 0; n < length; ++n) words.push_back(word(from, line, n, c));
            words = PlainLine(words, static_cast<double>(radius) * 0.25 + 0.05);
            for (int n = 0; n < length; ++n)
                word(*out, line, n, c) = static_cast<u16>(words[static_cast<std::size_t>(n)]);
        }
    return out;
}

constexpr float kRadii[] = {-100.0f, -17.0f, -9.0f, -0.2f, 0.0f,  1.0f,   1.7f,
                            1.8f,    1.81f,  4.0f,  9.8f,  10.0f, 100.0f, 700.0f};
constexpr int kSizes[][2] = {{1, 1}, {1, 9}, {9, 1}, {3, 2}, {17, 13}, {40, 33}};

TEST(GaussianRecursive, IsTheRecursionOfEveryLineOnEverySize) {
    for (const auto& size : kSizes)
        for (float radius : kRadii)
            for (int direction : {0, 1})
                for (bool alpha : {false, true}) {
                    const Picture in = Noise(size[0], size[1]);
                    const Picture out = Noise(size[0], size[1], 2);
                    const Picture want = PlainPass(*in, *out, radius, direction == 1, 0, alpha ? 4 : 3);
                    const Dispatch dispatch(3);
                    out->GaussianRecursive(radius, in.get(), direction, alpha);
                    EXPECT_TRUE(Same(*out, *want)) << size[0] << " x " << size[1] << " radius " << radius
                                                   << " direction " << direction << " alpha " << alpha;
                }
}

TEST(GaussianRecursive, HardEdgesAndLongBlackKeepToTheRecursion) {
    // Edges overshoot neither end of the words. On the long line the recursion falls below the smallest
    // full-precision numbers and begins again.
    const Picture pictures[] = {
        MakePicture(60, 20, [](int x, int y, int c) { return (x / 7 + y / 5 + c) % 2 * 32767; }),
        MakePicture(4000, 1, [](int x, int, int c) { return x < 2 || x == 3000 ? 30000 + c : 0; })};
    for (const Picture& in : pictures)
        for (float radius : kRadii) {
            const Picture out = K7Image::MakeCopy(*in);
            out->GaussianRecursive(radius, in.get(), 0, true);
            EXPECT_TRUE(Same(*out, *PlainPass(*in, *in, radius, false, 0, 4))) << radius;
        }
}

TEST(GaussianRecursive, GivesTheWorkedImpulseAndFlatLine) {
    const Picture dot = MakePicture(31, 1, [](int x, int, int) { return x == 15 ? 32767 : 0; });
    dot->GaussianRecursive(0.0f, nullptr, 0, true);
    EXPECT_EQ(dot->Rows[0][4 * 14], 1708);
    EXPECT_EQ(dot->Rows[0][4 * 15], 29222);
    EXPECT_EQ(dot->Rows[0][4 * 16], 1708);

    const Picture flat = Flat(64, 1, 32767);
    flat->GaussianRecursive(10.0f, nullptr, 0, true);
    EXPECT_EQ(flat->Rows[0][0], 29766);
    EXPECT_GE(flat->Rows[0][4 * 32], 32766);
    EXPECT_EQ(flat->Rows[0][4 * 63], 32612);
}

TEST(GaussianRecursive, GoesAlongOneAxisBothOrNoneAlsoInPlace) {
    const Picture in = Noise(45, 39);
    const Picture old = Noise(45, 39, 2);
    for (int direction : {-1, 0, 1, 2, 3}) {
        const auto want = [&](const K7Image& into) {
            const bool rows = direction == 0 || direction == 2;
            const bool columns = direction == 1 || direction == 2;
            Picture out = rows ? PlainPass(*in, into, 9.0f, false, 0, 3) : K7Image::MakeCopy(into);
            return columns ? PlainPass(rows ? *out : *in, *out, 9.0f, true, 0, 3) : std::move(out);
        };
        const Dispatch dispatch(3, true);
        const Picture from = K7Image::MakeCopy(*old);
        from->GaussianRecursive(9.0f, in.get(), direction, false);
        EXPECT_TRUE(Same(*from, *want(*old))) << direction;
        const Picture inPlace = K7Image::MakeCopy(*in);
        inPlace->GaussianRecursive(9.0f, nullptr, direction, false);
        EXPECT_TRUE(Same(*inPlace, *want(*in))) << direction << " in place";
    }
    EXPECT_TRUE(Same(*in, *Noise(45, 39))) << "the source stays as it is";
}

TEST(GaussianRecursive, BoundsRadiiThatAreNoRadii) {
    const float infinity = std::numeric_limits<float>::infinity();
    const Picture in = Noise(11, 6);
    const auto blurred = [&](float radius) {
        Picture out = K7Image::MakeCopy(*in);
        out->GaussianRecursive(radius, in.get(), 2, true);
        return out;
    };
    EXPECT_TRUE(Same(*blurred(std::nanf("")), *blurred(0.0f)));
    EXPECT_TRUE(Same(*blurred(infinity), *blurred(65536.0f)));
    EXPECT_TRUE(Same(*blurred(-infinity), *blurred(-1e30f)));
}

TEST(GaussianRecursive, OneChannelKeepsOrClearsTheOthers) {
    const Picture in = Noise(21, 18);
    const Picture old = Noise(21, 18, 2);
    const Picture black = Flat(21, 18, 0);
    for (int channel : {0, 1, 2, 3})
        for (int direction : {0, 1}) {
            const auto want = [&](const K7Image& others) {
                return PlainPass(*in, others, 3.0f, direction == 1, channel, channel + 1);
            };
            const Picture out = K7Image::MakeCopy(*old);
            out->GaussianRecursiveChannel(3.0f, in.get(), direction, channel, true);
            EXPECT_TRUE(Same(*out, *want(*in))) << channel;
            out->GaussianRecursiveChannel(3.0f, in.get(), direction, channel, false);
            EXPECT_TRUE(Same(*out, *want(*black))) << channel;
            const Picture inPlace = K7Image::MakeCopy(*in);
            inPlace->GaussianRecursiveChannel(3.0f, nullptr, direction, channel, false);
            EXPECT_TRUE(Same(*inPlace, *want(*in))) << channel;
        }
}

} // namespace
} // namespace k7::test
