#include "lens/DiffractionTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>
#include <vector>

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

/// The halo of a single slit with all angles worked out.
template <class Real>
DiffractionTable<Real> RadialHalo(Real aperture, Real gain) {
    const auto largest =
        static_cast<Real>(std::asin(static_cast<float>(7e-7 / (aperture * 0.001))) * kDegrees);
    const int count = 1 + static_cast<int>(largest / static_cast<Real>(0.001));
    CLRK7 clr;
    DiffractionTable<Real> table;
    EXPECT_TRUE(BuildDiffractionTable(clr, {aperture, aperture, 1, largest, gain}, count, count, table));
    return table;
}

template <class Real>
class Diffraction : public testing::Test {};
using Widths = testing::Types<double, float>;
TYPED_TEST_SUITE(Diffraction, Widths);

TYPED_TEST(Diffraction, OneSlitIsTheSquaredSinc) {
    using Real = TypeParam;
    for (double mm : {0.1, 1.0, 4.0})
        for (double nm : {400.0, 555.0, 700.0})
            for (double angle : {0.00001, 0.004, 0.01, 0.02}) {
                const double b = std::numbers::pi * mm * 1e-3 / (nm * 1e-9) * std::sin(angle / kDegrees);
                const double want = std::sin(b) * std::sin(b) / (b * b);
                const Real a = static_cast<Real>(mm);
                EXPECT_NEAR(SlitIntensity<Real>(static_cast<Real>(nm), static_cast<Real>(angle), a, a, 1),
                            want, 2e-6)
                    << mm << " mm " << nm << " nm " << angle;
            }
}

TYPED_TEST(Diffraction, TwoSlitsModulateOneByTheSquaredCosine) {
    using Real = TypeParam;
    for (double angle : {0.003, 0.011, 0.02, 0.033}) {
        const double g = std::numbers::pi * 1.2e-3 / 500e-9 * std::sin(angle / kDegrees);
        const double one = SlitIntensity<Real>(500, static_cast<Real>(angle), 1, 1, 1);
        const double two = SlitIntensity<Real>(500, static_cast<Real>(angle), 1, static_cast<Real>(1.2), 2);
        EXPECT_NEAR(two, 4 * std::cos(g) * std::cos(g) * one, 1e-4) << angle;
    }
}

TYPED_TEST(Diffraction, AxisIsBrightAndTheRimIsTheDarkRingOfRed) {
    using Real = TypeParam;
    const Real rim = static_cast<Real>(std::asin(7e-7 / 4e-3) * kDegrees);
    const auto at = [](double nm, Real angle) {
        return SlitIntensity<Real>(static_cast<Real>(nm), angle, 4, 4, 1);
    };
    EXPECT_NEAR(at(555, static_cast<Real>(0.00001)), 1.0, 1e-5);
    EXPECT_NEAR(at(700, rim), 0.0, 1e-9);
    EXPECT_GT(at(400, rim), 0.01); // beyond its own dark ring
    EXPECT_LT(at(400, static_cast<Real>(rim * 4 / 7)), 1e-9);
}

TYPED_TEST(Diffraction, HaloOfFourMillimetresHasTheKnownColours) {
    const auto table = RadialHalo<TypeParam>(4, 1);
    ASSERT_EQ(table.Count, 11);
    const double want[][4] = {{0, 1.000, 0.856, 0.815},
                              {5, 0.289, 0.178, 0.054},
                              {7, 0.054, 0.010, 0.006},
                              {10, 0.015, 0.033, 0.032}};
    for (const auto& row : want) {
        const auto& entry = table.Entries[static_cast<std::size_t>(row[0])];
        EXPECT_NEAR(entry.R, row[1], 5.1e-4) << row[0];
        EXPECT_NEAR(entry.G, row[2], 5.1e-4) << row[0];
        EXPECT_NEAR(entry.B, row[3], 5.1e-4) << row[0];
    }
}

TYPED_TEST(Diffraction, BrightestChannelOnTheAxisIsTheGain) {
    const auto table = RadialHalo<TypeParam>(1, 5);
    EXPECT_NEAR(table.Entries[0].R, 5.0, 1e-5);
    for (const auto& entry : table.Entries)
        for (double value : {entry.R, entry.G, entry.B}) {
            EXPECT_GE(value, 0.0);
            EXPECT_LE(value, 5.0);
        }
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

TYPED_TEST(Diffraction, SquareIsTheTableTurnedRoundItsAxis) {
    const auto radial = RadialHalo<TypeParam>(2, 1);
    const int n = radial.Count;
    HaloKernel<TypeParam> square;
    ASSERT_TRUE(MakeSquareTable(radial, 1.0f, square));
    const auto at = [&](int dx, int dy) -> const auto& {
        return square.Entries[static_cast<std::size_t>((dy + n) * square.Side() + dx + n)];
    };
    for (int i = 0; i < n - 1; ++i) EXPECT_EQ(at(i, 0).G, radial.Entries[static_cast<std::size_t>(i)].G);
    EXPECT_EQ(at(n - 1, 0).R, 0.0);
    const TypeParam between = at(1, 1).R; // 1.414 from the axis
    EXPECT_GT(between, radial.Entries[2].R);
    EXPECT_LT(between, radial.Entries[1].R);
    for (int y = 0; y <= n; ++y)
        for (int x = 0; x <= n; ++x)
            for (const auto* other : {&at(-x, y), &at(x, -y), &at(-x, -y), &at(y, x)})
                EXPECT_EQ(std::memcmp(&at(x, y), other, sizeof(*other)), 0) << x << " " << y;
}

TYPED_TEST(Diffraction, HaloIsRoundOnPixelsThatAreNotSquare) {
    const auto radial = RadialHalo<TypeParam>(2, 1);
    const int n = radial.Count;
    HaloKernel<TypeParam> wide, tall;
    ASSERT_TRUE(MakeSquareTable(radial, 0.5f, wide)); // pixels twice as wide as high
    ASSERT_TRUE(MakeSquareTable(radial, 2.0f, tall));
    const auto at = [n](const HaloKernel<TypeParam>& square, int dx, int dy) {
        return square.Entries[static_cast<std::size_t>((dy + n) * square.Side() + dx + n)].R;
    };
    for (int i = 0; 2 * i <= n; ++i) {
        EXPECT_EQ(at(wide, i, 0), at(wide, 0, 2 * i));
        EXPECT_EQ(at(tall, 2 * i, 0), at(tall, 0, i));
    }
}

TYPED_TEST(Diffraction, HaloOfOneEntryIsEmpty) {
    DiffractionTable<TypeParam> radial;
    CLRK7 clr;
    ASSERT_TRUE(BuildDiffractionTable<TypeParam>(clr, {100, 100, 1, 0, 1}, 1, 1, radial));
    HaloKernel<TypeParam> square;
    ASSERT_TRUE(MakeSquareTable(radial, 1.0f, square));
    EXPECT_EQ(square.Side(), 3);
    for (const auto& entry : square.Entries) EXPECT_EQ(entry.R + entry.G + entry.B, 0.0);
}

TYPED_TEST(Diffraction, FringesDarkenFromWithinToTheRim) {
    using Real = TypeParam;
    const auto radial = RadialHalo<Real>(static_cast<Real>(0.5), 1);
    for (float aspect : {1.0f, 0.5f, 2.0f}) {
        HaloKernel<Real> plain, none, weak, full, more;
        for (auto* kernel : {&plain, &none, &weak, &full, &more})
            ASSERT_TRUE(MakeSquareTable(radial, aspect, *kernel));
        Ran1 random = Seeded();
        AddFringes<Real>(none, 0, 1, aspect, random);
        EXPECT_EQ(random, Seeded());
        EXPECT_TRUE(SameBytes(none.Entries, plain.Entries));
        AddFringes<Real>(weak, 30, -3, aspect, random = Seeded());
        AddFringes<Real>(full, 30, 1, aspect, random = Seeded());
        AddFringes<Real>(more, 30, 7, aspect, random = Seeded());
        EXPECT_TRUE(SameBytes(full.Entries, more.Entries));

        int darker = 0;
        for (std::size_t i = 0; i < plain.Entries.size(); ++i) {
            EXPECT_EQ(weak.Entries[i].R, plain.Entries[i].R);
            EXPECT_GE(full.Entries[i].R, 0.0);
            EXPECT_LE(full.Entries[i].R, plain.Entries[i].R);
            EXPECT_GE(full.Entries[i].Shade, 0.0);
            darker += full.Entries[i].R < plain.Entries[i].R;
        }
        EXPECT_GT(darker, 30);
        const int n = radial.Count;
        EXPECT_EQ(full.Entries[static_cast<std::size_t>(n * full.Side() + n)].Shade, 0.0)
            << "the middle stays";
    }
}

TYPED_TEST(Diffraction, FringesOfTheSmallestHalosHoldNumbers) {
    using Real = TypeParam;
    for (int n : {1, 2, 3})
        for (float aspect : {1.0f, 1e-30f, 1e30f}) {
            CLRK7 clr;
            DiffractionTable<Real> radial;
            HaloKernel<Real> halo;
            ASSERT_TRUE(
                BuildDiffractionTable<Real>(clr, {1, 1, 1, static_cast<Real>(0.01), 1}, n, n, radial));
            ASSERT_TRUE(MakeSquareTable(radial, aspect, halo));
            Ran1 random = Seeded();
            AddFringes<Real>(halo, 500, 1, aspect, random);
            for (const auto& entry : halo.Entries)
                for (Real value : {entry.R, entry.G, entry.B, entry.Shade}) EXPECT_TRUE(std::isfinite(value));
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
            ASSERT_TRUE(BuildGlowKernel<TypeParam>(static_cast<TypeParam>(radius), 40, aspect, random, glow));
            EXPECT_EQ(glow.Radius, std::max(1, static_cast<int>(std::ceil(radius))));
            double sum = 0.0;
            for (double weight : glow.Weights) sum += weight;
            EXPECT_NEAR(sum, std::max(radius, 0.01) * 40, 1e-2);
            Ran1 counted = Seeded();
            for (std::size_t i = 0; i < glow.Weights.size(); ++i) counted();
            EXPECT_EQ(random, counted) << "a draw for every cell";
        }
    GlowKernel<TypeParam> point;
    Ran1 random = Seeded();
    ASSERT_TRUE(BuildGlowKernel<TypeParam>(static_cast<TypeParam>(0.005), 1, 1.0f, random, point));
    for (std::size_t i = 0; i < 9; ++i) EXPECT_EQ(point.Weights[i] > 0, i == 4);
}

TYPED_TEST(Diffraction, TablesAreKeptWithTheSequenceOfTheGenerator) {
    using Real = TypeParam;
    const HaloInputs<Real> halo = {1, 5, 20, static_cast<Real>(0.5), 1.0f};
    const GlowInputs<Real> glow = {12, 40, 1.0f};
    CLRK7 clr;
    FlareTables<Real> kept;
    Ran1 before = Seeded();
    ASSERT_TRUE(kept.MakeHalo(clr, halo, before));
    ASSERT_TRUE(kept.MakeGlow(glow, before));
    const auto* haloCells = kept.Halo().Entries.data();
    const auto* glowCells = kept.Glow().Weights.data();

    Ran1 after = Seeded();
    ASSERT_TRUE(kept.MakeHalo(clr, halo, after));
    ASSERT_TRUE(kept.MakeGlow(glow, after));
    EXPECT_EQ(after, before);
    EXPECT_EQ(kept.Halo().Entries.data(), haloCells);
    EXPECT_EQ(kept.Glow().Weights.data(), glowCells);

    // Fewer fringes draw less, which moves the noise of the glow too.
    HaloInputs<Real> fewer = halo;
    fewer.Fringes = 19;
    FlareTables<Real> anew;
    Ran1 random = Seeded();
    Ran1 anewRandom = Seeded();
    ASSERT_TRUE(kept.MakeHalo(clr, fewer, random) && kept.MakeGlow(glow, random));
    ASSERT_TRUE(anew.MakeHalo(clr, fewer, anewRandom) && anew.MakeGlow(glow, anewRandom));
    EXPECT_EQ(random, anewRandom);
    EXPECT_TRUE(SameBytes(kept.Halo().Entries, anew.Halo().Entries));
    EXPECT_TRUE(SameBytes(kept.Glow().Weights, anew.Glow().Weights));
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
