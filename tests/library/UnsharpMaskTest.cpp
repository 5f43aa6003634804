#include "library/GaussianKernel.h"
#include "library/K7Image.h"
#include "library/KernelSums.h"
#include "library/NumberTransform.h"
#include "library/TableSums.h"

#include "tests/support/Pictures.h"
#include "tests/support/VectorLevels.h"

#include <cmath>
#include <limits>
#include <vector>

namespace k7::test {
namespace {

/// The table as it is defined, place by place.
struct PlainTable {
    explicit PlainTable(int radius) {
        const int n = std::max(radius, 2);
        size = 2 * n - 1;
        for (int i = -n; i <= n - 2; ++i)
            for (int j = -n; j <= n - 2; ++j) {
                const auto square = static_cast<float>(i * i + j * j);
                const float d = std::sqrt(square) * 2.5f / static_cast<float>(n);
                const float w = std::clamp(std::exp(d * -0.347f * d), 0.0f, 1.0f);
                weights.push_back(static_cast<int>(std::floor(w * 64.0f)));
                sum += weights.back();
            }
    }
    int At(int row, int column) const { return weights[static_cast<std::size_t>(row * size + column)]; }

    int size = 0;
    long long sum = 0;
    std::vector<int> weights;
};

TEST(GaussianKernel2D, IsTheDefinedTable) {
    for (int radius : {-1, 0, 1, 2, 3, 4, 7, 10, 28, 29, 30, 77, 400}) {
        const PlainTable want(radius);
        const GaussianKernel2D kernel = MakeGaussianKernel2D(static_cast<float>(radius));
        EXPECT_EQ(kernel.Size, want.size) << radius;
        EXPECT_EQ(kernel.Sum, want.sum) << radius;
        for (int row = 0; row < want.size; ++row)
            for (int column = 0; column < want.size; ++column)
                ASSERT_EQ(kernel.Weight(row - want.size / 2, column - want.size / 2), want.At(row, column));
    }
}

TEST(GaussianKernel2D, HasTheWorkedSumsAndItsSummitBehindTheMiddle) {
    EXPECT_EQ(MakeGaussianKernel2D(28.0f).Sum, 65235);
    EXPECT_EQ(MakeGaussianKernel2D(29.0f).Sum, 70067);
    EXPECT_EQ(MakeGaussianKernel2D(3.9f).Size, 5);
    EXPECT_EQ(MakeGaussianKernel2D(3.9f).Weight(1, 1), 64);
}

Picture PlainUnsharp(const K7Image& in, int radius, float amount, bool alpha) {
    const PlainTable table(radius);
    const int h = table.size / 2;
    return MakePicture(in.Width, in.Height, [&](int x, int y, int c) {
        const int word = in.Rows[y][4 * x + c];
        if (c == 3 && !alpha) return word;
        long long sum = 0;
        for (int a = 0; a < table.size; ++a)
            for (int b = 0; b < table.size; ++b) {
                const int u = x + b - h;
                const int v = y + a - h;
                if (u >= 0 && u < in.Width && v >= 0 && v < in.Height)
                    sum += static_cast<long long>(table.At(a, b)) * in.Rows[v][4 * u + c];
            }
        const float difference = static_cast<float>(word - sum / table.sum);
        const float result = difference * amount + static_cast<float>(word);
        return static_cast<int>(std::clamp(std::trunc(static_cast<double>(result) + 0.5), 0.0, 32767.0));
    });
}

TEST(UnsharpMask, IsTheSumOverTheTableOnEverySize) {
    OnEachLevel([] {
        const int sizes[][2] = {{1, 1}, {1, 9}, {9, 1}, {3, 2}, {17, 13}, {31, 24}};
        for (const auto& size : sizes)
            for (int radius : {-4, 0, 2, 3, 5, 10, 28, 29, 40, 150})
                for (bool alpha : {false, true}) {
                    const float amount = radius % 2 ? 0.5f : 3.7f;
                    const Picture in = Noise(size[0], size[1]);
                    const Picture out = Noise(size[0], size[1], 2);
                    const Picture want = PlainUnsharp(*in, radius, amount, alpha);
                    out->UnsharpMask(static_cast<float>(radius), amount, in.get(), alpha);
                    EXPECT_TRUE(Same(*out, *want)) << size[0] << " x " << size[1] << " radius " << radius;
                    const Picture inPlace = K7Image::MakeCopy(*in);
                    inPlace->UnsharpMask(static_cast<float>(radius), amount, nullptr, alpha);
                    EXPECT_TRUE(Same(*inPlace, *want)) << "in place, radius " << radius;
                }
    });
}

TEST(UnsharpMask, PlaceByPlaceAndByTransformTheSumsAreTheSame) {
    const int sizes[][2] = {{1, 1}, {1, 30}, {30, 1}, {16, 16}, {17, 33}};
    for (const auto& size : sizes)
        for (int radius : {2, 3, 9, 28}) {
            const Picture in = Noise(size[0], size[1]);
            const GaussianKernel2D kernel = MakeGaussianKernel2D(static_cast<float>(radius));
            const KernelReach reach = {std::min(radius - 1, size[0] - 1), std::min(radius - 1, size[1] - 1)};
            const auto transform = MakeTransformSums<u16>(kernel, reach, size[0], size[1]);
            std::vector<double> got(static_cast<std::size_t>(size[0]));
            for (int channel : {3, 0}) {
                TableSums table(kernel, reach, size[0]);
                table.Start(*in, 0);
                transform->Start(*in, channel);
                for (int y = 0; y < size[1]; ++y) {
                    const std::int32_t* const want = table.Row(y) + channel;
                    transform->Row(y, got.data());
                    for (int x = 0; x < size[0]; ++x)
                        ASSERT_EQ(got[static_cast<std::size_t>(x)], want[4 * x])
                            << size[0] << " x " << size[1] << " radius " << radius << " row " << y;
                }
            }
        }
}

TEST(NumberTransform, ThereAndBackAgainIsTheLengthTimesTheNumbers) {
    const FieldNumber prime = 0xFFFFFFFF00000001u;
    for (std::size_t length : {1u, 2u, 4u, 64u, 4096u}) {
        std::vector<FieldNumber> numbers;
        for (std::size_t i = 0; i < length; ++i) numbers.push_back(i * 0x9E3779B97F4A7C15u % prime);
        numbers.back() = prime - 1;
        std::vector<FieldNumber> there = numbers;
        ForwardTransform(there.data(), length);
        BackwardTransform(there.data(), length);
        for (FieldNumber& number : there) number = FieldMultiply(number, FieldInverse(length));
        EXPECT_EQ(there, numbers) << length;
    }
    EXPECT_EQ(FieldMultiply(prime - 1, prime - 1), 1u) << "minus one squared";
    EXPECT_EQ(FieldMultiply(std::uint64_t{1} << 48, std::uint64_t{1} << 48), prime - 1) << "2^96";
}

TEST(UnsharpMask, FullWhiteDoesNotOverflowAnyRadius) {
    for (int radius : {28, 29, 60}) {
        const Picture in = Flat(62, 60, 32767);
        const Picture want = PlainUnsharp(*in, radius, -1.0f, true);
        in->UnsharpMask(static_cast<float>(radius), -1.0f, nullptr, true);
        EXPECT_TRUE(Same(*in, *want)) << radius;
    }
}

TEST(UnsharpMask, AmountsFromNothingToTooMuch) {
    const Picture in = Noise(14, 12);
    const Picture out = Flat(14, 12, 5);
    out->UnsharpMask(4.0f, 0.0f, in.get(), true);
    EXPECT_TRUE(Same(*out, *in));
    out->UnsharpMask(4.0f, std::nanf(""), in.get(), true);
    EXPECT_TRUE(Same(*out, *in)) << "NaN counts as 0";
    for (float amount : {1e9f, std::numeric_limits<float>::infinity()}) {
        const Picture flat = Flat(14, 12, 700);
        flat->UnsharpMask(2.0f, amount, nullptr, true);
        EXPECT_EQ(flat->Rows[6][4 * 6], 700) << "where nothing differs nothing is added";
        EXPECT_EQ(flat->Rows[0][0], 32767);
    }
}

TEST(UnsharpMask, HugeRadiiLeaveNothingOfTheBlur) {
    const Picture in = Noise(30, 20);
    const Picture want = MakePicture(30, 20, [&](int x, int y, int c) {
        return std::min(32767, static_cast<int>(in->Rows[y][4 * x + c] * 1.5 + 0.5));
    });
    for (float radius : {4200.0f, 1e6f, std::numeric_limits<float>::infinity()}) {
        const Picture out = K7Image::MakeCopy(*in);
        out->UnsharpMask(radius, 0.5f, in.get(), true);
        EXPECT_TRUE(Same(*out, *want)) << radius;
    }
}

} // namespace
} // namespace k7::test
