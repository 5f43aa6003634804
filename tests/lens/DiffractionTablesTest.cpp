#include "lens/DiffractionTables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <utility>

namespace k7::test {
namespace {

constexpr double kDegrees = 180.0 / std::numbers::pi;

Ran1 Seeded() {
    Ran1 random;
    random.Seed(-1);
    return random;
}

template <class T>
bool SameBytes(const Buffer<T>& a, const Buffer<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

/// The halo of a single slit with all angles computed.
template <class Real>
DiffractionTable<Real> RadialHalo(Real aperture, Real gain = 1) {
    const auto largest =
        static_cast<Real>(std::asin(static_cast<float>(7e-7 / (aperture * 0.001))) * kDegrees);
    const int count = 1 + static_cast<int>(largest / static_cast<Real>(0.001));
    CLRK7 clr;
    DiffractionTable<Real> table;
    EXPECT_TRUE(BuildDiffractionTable(clr, {aperture, aperture, 1, largest, gain}, count, count, table));
    return table;
}

template <class Real>
HaloKernel<Real> Square(const DiffractionTable<Real>& radial, float aspect) {
    HaloKernel<Real> square;
    EXPECT_TRUE(MakeSquareTable(radial, aspect, {}, square));
    return square;
}

template <class Cell>
const Cell& At(const Kernel<Cell>& kernel, int dx, int dy) {
    const int row = dy + kernel.Reach.Y;
    return kernel.Cells[static_cast<std::size_t>(row * kernel.Columns() + dx + kernel.Reach.X)];
}

template <class Real>
class Diffraction : public testing::Test {};
using Widths = testing::Types<double, float>;
TYPED_TEST_SUITE(Diffraction, Widths);

TYPED_TEST(Diffraction, OneSlitIsASquaredSincAndTwoModulateItByASquaredCosine) {
    using Real = TypeParam;
    for (double mm : {0.1, 1.0, 4.0})
        for (double nm : {400.0, 555.0, 700.0})
            for (double angle : {0.00001, 0.004, 0.01, 0.02}) {
                const double half = std::numbers::pi / (nm * 1e-9) * std::sin(angle / kDegrees);
                const double b = half * mm * 1e-3;
                const double one = std::sin(b) * std::sin(b) / (b * b);
                const double two = 4 * one * std::pow(std::cos(half * 1.2e-3), 2);
                const auto got = [&](double spacing, int slits) {
                    return SlitIntensity(static_cast<Real>(nm), static_cast<Real>(angle),
                                         static_cast<Real>(mm), static_cast<Real>(spacing), slits);
                };
                EXPECT_NEAR(got(mm, 1), one, 2e-6) << mm << " mm " << nm << " nm " << angle;
                EXPECT_NEAR(got(1.2, 2), two, 1e-4) << mm << " mm " << nm << " nm " << angle;
            }
}

TYPED_TEST(Diffraction, HaloOfFourMillimetresHasTheKnownColoursTimesTheGain) {
    const auto table = RadialHalo<TypeParam>(4, 5);
    ASSERT_EQ(table.Count, 11);
    const double want[][4] = {{0, 1.000, 0.856, 0.815},
                              {5, 0.289, 0.178, 0.054},
                              {7, 0.054, 0.010, 0.006},
                              {10, 0.015, 0.033, 0.032}};
    for (const auto& row : want) {
        const auto& entry = table.Entries[static_cast<std::size_t>(row[0])];
        EXPECT_NEAR(entry.R, 5 * row[1], 2.6e-3) << row[0];
        EXPECT_NEAR(entry.G, 5 * row[2], 2.6e-3) << row[0];
        EXPECT_NEAR(entry.B, 5 * row[3], 2.6e-3) << row[0];
    }
    EXPECT_NEAR(table.Entries[0].R, 5.0, 1e-5);
    for (const auto& entry : RadialHalo<TypeParam>(1, 5).Entries)
        for (double value : {entry.R, entry.G, entry.B}) EXPECT_NEAR(value, 2.5, 2.5); // from 0 to the gain
}

TYPED_TEST(Diffraction, FirstEntriesAreThoseOfTheWholeTable) {
    using Real = TypeParam;
    const Grating<Real> grating = {Real(1.0), Real(1.2), 2, Real(0.07), 10};
    CLRK7 clr;
    DiffractionTable<Real> whole, part;
    ASSERT_TRUE(BuildDiffractionTable(clr, grating, 40, 40, whole));
    ASSERT_TRUE(BuildDiffractionTable(clr, grating, 40, 13, part));
    ASSERT_EQ(part.Entries.size(), 13u);
    EXPECT_EQ(std::memcmp(whole.Entries.data(), part.Entries.data(), 13 * sizeof(whole.Entries[0])), 0);
    EXPECT_FALSE(clr.Created);
    ASSERT_TRUE(BuildDiffractionTable(clr, grating, 0, 0, part));
    EXPECT_EQ(part.Entries.size(), 0u);
}

TYPED_TEST(Diffraction, SquareIsTheTableRotatedAroundItsAxis) {
    const auto radial = RadialHalo<TypeParam>(2);
    const int n = radial.Count;
    const auto square = Square(radial, 1.0f);
    for (int i = 0; i < n - 1; ++i)
        EXPECT_EQ(At(square, i, 0).G, radial.Entries[static_cast<std::size_t>(i)].G);
    EXPECT_EQ(At(square, n - 1, 0).R, 0.0);
    const TypeParam between = At(square, 1, 1).R; // 1.414 from the axis
    EXPECT_GT(between, radial.Entries[2].R);
    EXPECT_LT(between, radial.Entries[1].R);
    for (int y = 0; y <= n; ++y)
        for (int x = 0; x <= n; ++x)
            for (const auto& [u, v] : {std::pair{-x, y}, {x, -y}, {-x, -y}, {y, x}})
                EXPECT_EQ(std::memcmp(&At(square, x, y), &At(square, u, v), sizeof At(square, 0, 0)), 0)
                    << x << " " << y;

    const auto wide = Square(radial, 0.5f); // round even if pixels are twice as wide as high
    const auto tall = Square(radial, 2.0f);
    for (int i = 0; 2 * i <= n; ++i) {
        EXPECT_EQ(At(wide, i, 0).R, At(wide, 0, 2 * i).R);
        EXPECT_EQ(At(tall, 2 * i, 0).R, At(tall, 0, i).R);
    }
}

TYPED_TEST(Diffraction, FringesDarkenFromTheInsideToTheRim) {
    using Real = TypeParam;
    const auto radial = RadialHalo<Real>(static_cast<Real>(0.5));
    for (float aspect : {1.0f, 0.5f, 2.0f}) {
        const auto plain = Square(radial, aspect);
        Ran1 random;
        const auto fringed = [&](int count, double strength) {
            auto halo = Square(radial, aspect);
            random.Seed(-1);
            AddFringes(halo, count, static_cast<Real>(strength), aspect, random);
            return halo;
        };
        EXPECT_TRUE(SameBytes(fringed(0, 1).Cells, plain.Cells));
        EXPECT_EQ(random, Seeded());
        const auto weak = fringed(30, -3);
        const auto full = fringed(30, 1);
        EXPECT_TRUE(SameBytes(full.Cells, fringed(30, 7).Cells));

        int darker = 0;
        for (std::size_t i = 0; i < plain.Cells.size(); ++i) {
            EXPECT_EQ(weak.Cells[i].R, plain.Cells[i].R);
            EXPECT_GE(full.Cells[i].R, 0.0);
            EXPECT_LE(full.Cells[i].R, plain.Cells[i].R);
            EXPECT_GE(full.Cells[i].Shade, 0.0);
            darker += full.Cells[i].R < plain.Cells[i].R;
        }
        EXPECT_GT(darker, 30);
        EXPECT_EQ(At(full, 0, 0).Shade, 0.0) << "the middle stays";
    }
}

TYPED_TEST(Diffraction, TheSmallestHalosAreFinite) {
    using Real = TypeParam;
    for (int n : {1, 2, 3})
        for (float aspect : {1.0f, 1e-30f, 1e30f}) {
            CLRK7 clr;
            DiffractionTable<Real> radial;
            ASSERT_TRUE(
                BuildDiffractionTable<Real>(clr, {1, 1, 1, static_cast<Real>(0.01), 1}, n, n, radial));
            auto halo = Square(radial, aspect);
            EXPECT_EQ(halo.Side(), 2 * n + 1);
            Ran1 random = Seeded();
            AddFringes<Real>(halo, 500, 1, aspect, random);
            for (const auto& entry : halo.Cells) {
                const Real light = entry.R + entry.G + entry.B;
                EXPECT_TRUE(n == 1 ? light == 0 : std::isfinite(light)); // one entry is the dark rim
                EXPECT_TRUE(std::isfinite(entry.Shade));
            }
        }
}

TYPED_TEST(Diffraction, MonoPullsTheRootToWhite) {
    using Real = TypeParam;
    const auto streak = [](Real mono, Real gain) {
        CLRK7 clr;
        DiffractionTable<Real> table;
        EXPECT_TRUE(BuildDiffractionTable(clr, {Real(1.0), Real(1.2), 2, Real(0.07), gain}, 50, 50, table));
        MonoBlend(table, mono, gain);
        return table;
    };
    const auto none = streak(0, 10);
    const auto half = streak(static_cast<Real>(0.05), 10);
    const auto full = streak(1, 10);
    EXPECT_EQ(full.Entries[0].R, 1.0); // white, not the gain
    EXPECT_EQ(full.Entries[0].G, 1.0);
    EXPECT_EQ(full.Entries[0].B, 1.0);
    EXPECT_NEAR(half.Entries[0].G, 0.5 * none.Entries[0].G + 0.5, 1e-5);
    EXPECT_NEAR(half.Entries[49].G, none.Entries[49].G, 1e-5);
    const double middle = 0.5 - 25 * (0.5 / 49);
    EXPECT_NEAR(half.Entries[25].B, (1 - middle) * none.Entries[25].B + middle, 1e-5);
}

TYPED_TEST(Diffraction, GlowAddsUpToRadiusTimesStrength) {
    for (double radius : {0.005, 1.0, 7.3, 30.0})
        for (float aspect : {1.0f, 0.5f, 2.0f}) {
            GlowKernel<TypeParam> glow;
            Ran1 random = Seeded();
            ASSERT_TRUE(
                BuildGlowKernel<TypeParam>(static_cast<TypeParam>(radius), 40, aspect, {}, random, glow));
            EXPECT_EQ(glow.Radius, std::max(1, static_cast<int>(std::ceil(radius))));
            double sum = 0.0;
            for (double weight : glow.Cells) sum += weight;
            EXPECT_NEAR(sum, std::max(radius, 0.01) * 40, 1e-2);
            Ran1 counted = Seeded();
            for (std::size_t i = 0; i < glow.Cells.size(); ++i) counted();
            EXPECT_EQ(random, counted) << "a draw for every cell";
        }
    GlowKernel<TypeParam> point;
    Ran1 random = Seeded();
    ASSERT_TRUE(BuildGlowKernel<TypeParam>(static_cast<TypeParam>(0.005), 1, 1.0f, {}, random, point));
    for (std::size_t i = 0; i < 9; ++i) EXPECT_EQ(point.Cells[i] > 0, i == 4);
}

TYPED_TEST(Diffraction, TablesAreKeptWithTheSequenceOfTheGenerator) {
    using Real = TypeParam;
    HaloInputs<Real> halo = {1, 5, 20, static_cast<Real>(0.5), 1.0f};
    CLRK7 clr;
    FlareTables<Real> kept, fresh;
    const auto make = [&](FlareTables<Real>& tables) { // returns where it leaves the generator
        Ran1 random = Seeded();
        EXPECT_TRUE(tables.MakeHalo(clr, halo, random) && tables.MakeGlow({12, 40, 1.0f}, random));
        return random;
    };
    const Ran1 first = make(kept);
    const auto* haloCells = kept.Halo().Cells.data();
    const auto* glowCells = kept.Glow().Cells.data();
    EXPECT_EQ(make(kept), first);
    EXPECT_EQ(kept.Halo().Cells.data(), haloCells);
    EXPECT_EQ(kept.Glow().Cells.data(), glowCells);

    halo.Fringes = 19; // fewer draws, which also changes the noise of the glow
    EXPECT_EQ(make(kept), make(fresh));
    EXPECT_TRUE(SameBytes(kept.Halo().Cells, fresh.Halo().Cells));
    EXPECT_TRUE(SameBytes(kept.Glow().Cells, fresh.Glow().Cells));
}

TYPED_TEST(Diffraction, AKernelKeepsThePartThatAPictureShows) {
    using Real = TypeParam;
    CLRK7 clr;
    for (float aspect : {1.0f, 0.5f, 2.0f})
        for (PixelReach seen : {PixelReach{7, 30}, PixelReach{60, 3}, PixelReach{0, 0}}) {
            FlareTables<Real> whole, part;
            Ran1 drawn = Seeded(), drawnToo = Seeded();
            const auto make = [&](FlareTables<Real>& tables, PixelReach reach, Ran1& random) {
                EXPECT_TRUE(tables.MakeHalo(clr, {1, 5, 300, static_cast<Real>(0.9), aspect, reach}, random));
                EXPECT_TRUE(tables.MakeGlow({50, 40, aspect, reach}, random));
            };
            make(whole, {}, drawn);
            make(part, seen, drawnToo);
            EXPECT_EQ(drawn, drawnToo);
            const auto expectPart = [&](const auto& all, const auto& kept) {
                EXPECT_EQ(kept.Reach,
                          (PixelReach{std::min(seen.X, all.Radius), std::min(seen.Y, all.Radius)}));
                for (int dy = -kept.Reach.Y; dy <= kept.Reach.Y; ++dy)
                    EXPECT_EQ(std::memcmp(&At(kept, -kept.Reach.X, dy), &At(all, -kept.Reach.X, dy),
                                          static_cast<std::size_t>(kept.Columns()) * sizeof(kept.Cells[0])),
                              0)
                        << "row " << dy;
            };
            expectPart(whole.Halo(), part.Halo());
            expectPart(whole.Glow(), part.Glow());
        }
}

TYPED_TEST(Diffraction, RadiusFollowsTheAperture) {
    using Real = TypeParam;
    CLRK7 clr;
    FlareTables<Real> tables;
    Ran1 random = Seeded();
    const auto make = [&](double aperture) {
        return tables.MakeHalo(clr, {static_cast<Real>(aperture), 1, 0, 0, 1.0f}, random);
    };
    ASSERT_TRUE(make(4.0));
    EXPECT_EQ(tables.Halo().Radius, 11);
    ASSERT_TRUE(make(0.1));
    EXPECT_EQ(tables.Halo().Radius, 402);
    const double inf = std::numeric_limits<double>::infinity();
    for (double none : {0.0, -1.0, 0.00069, -inf, std::nan("")}) EXPECT_FALSE(make(none)) << none;
    EXPECT_FALSE(make(0.001)) << "a halo of 88846 pixels";
    EXPECT_TRUE(make(4.0)) << "after a failure";
    EXPECT_EQ(tables.Halo().Radius, 11);
    for (double huge : {6000.0, 1e30, inf})
        EXPECT_FALSE(tables.MakeGlow({static_cast<Real>(huge), 1, 1.0f}, random)) << huge;
}

} // namespace
} // namespace k7::test
