#include "lens/clr.h"

#include <gtest/gtest.h>

#include <vector>

namespace k7::test {
namespace {

TEST(Clr, HoldsTheStandardsTable) {
    CLRK7 clr;
    ASSERT_TRUE(clr.Create(300, 900, nullptr));
    double sums[3] = {};
    for (std::size_t i = 80; i <= 480; i += 5) {
        sums[0] += clr.XBar[i];
        sums[1] += clr.YBar[i];
        sums[2] += clr.ZBar[i];
    }
    EXPECT_NEAR(sums[0], 21.3714, 1e-9);
    EXPECT_NEAR(sums[1], 21.3711, 1e-9);
    EXPECT_NEAR(sums[2], 21.3715, 1e-9);

    const double rows[][4] = {{379, 0, 0, 0}, // dark at both ends
                              {380, 0.0014, 0.0000, 0.0065},
                              {450, 0.3362, 0.0380, 1.7721},
                              {520, 0.0633, 0.7100, 0.0782},
                              {555, 0.5121, 1.0000, 0.0057},
                              {600, 1.0622, 0.6310, 0.0008},
                              {780, 0.0000, 0.0000, 0.0000},
                              {781, 0, 0, 0}};
    for (const auto& row : rows) {
        const auto i = static_cast<std::size_t>(row[0] - 300);
        EXPECT_NEAR(clr.XBar[i], row[1], 1e-15) << row[0];
        EXPECT_NEAR(clr.YBar[i], row[2], 1e-15) << row[0];
        EXPECT_NEAR(clr.ZBar[i], row[3], 1e-15) << row[0];
    }
    EXPECT_NEAR(clr.YBar[257], 0.9980, 1e-12); // 557 nm, between 1.0000 and 0.9950
}

TEST(Clr, FromVioletToRedAFlatSpectrumHasUnitLuminanceAndAWarmTint) {
    CLRK7 clr;
    ASSERT_TRUE(clr.Create(400, 700, nullptr));
    EXPECT_EQ(clr.XBar.size(), 301u);
    EXPECT_EQ(clr.XBar[0], 0.0143);
    EXPECT_EQ(clr.XBar[300], 0.0114);
    EXPECT_NEAR(1.0 / clr.Normaliser, 106.7955, 1e-9);
    const std::vector<double> flat(301, 1.0);
    double xyz[3], rgb[3];
    clr.SpectrumToXYZ(xyz, flat.data());
    EXPECT_NEAR(xyz[1], 1.0, 1e-12);
    clr.SpectrumToRGB(rgb, flat.data());
    const double tint[3] = {1.119, 0.958, 0.912};
    for (int c = 0; c < 3; ++c) EXPECT_NEAR(rgb[c], tint[c], 5e-4);

    const double toXyz[3][3] = {
        {0.589316, 0.178982, 0.183070}, {0.290260, 0.605128, 0.104612}, {0.000000, 0.068183, 1.019962}};
    const double toRgb[3][3] = {
        {1.966957, -0.548333, -0.296804}, {-0.954515, 1.937955, -0.027441}, {0.063808, -0.129550, 0.982263}};
    // R = G = B = 1 is the white point at Y = 1.
    const double white[3] = {0.313 / 0.329, 1.0, (1.0 - 0.313 - 0.329) / 0.329};
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            EXPECT_NEAR(clr.RGBToXYZ[r][c], toXyz[r][c], 5e-7) << r << c;
            EXPECT_NEAR(clr.XYZToRGB[r][c], toRgb[r][c], 5e-7) << r << c;
        }
        EXPECT_NEAR(clr.RGBToXYZ[r][0] + clr.RGBToXYZ[r][1] + clr.RGBToXYZ[r][2], white[r], 1e-12);
    }
}

TEST(Clr, PrimariesOfTheCallerTakeTheirZFromXAndY) {
    CLRK7 clr;
    const double rec709[12] = {0.64, 0.33, 9.0, 0.30, 0.60, 9.0, 0.15, 0.06, 9.0, 0.3127, 0.3290, 9.0};
    ASSERT_TRUE(clr.Create(400, 700, rec709));
    EXPECT_NEAR(clr.RGBToXYZ[1][0], 0.2126, 1e-4); // the luma weights of that standard
    EXPECT_NEAR(clr.RGBToXYZ[1][1], 0.7152, 1e-4);
    EXPECT_NEAR(clr.RGBToXYZ[1][2], 0.0722, 1e-4);
}

TEST(Clr, RefusesWhatHasNoColoursAndASecondTime) {
    CLRK7 clr;
    const double line[12] = {0.3, 0.3, 0, 0.4, 0.4, 0, 0.5, 0.5, 0, 0.313, 0.329, 0};
    const double black[12] = {0.67, 0.33, 0, 0.21, 0.71, 0, 0.14, 0.08, 0, 0.313, 0.0, 0};
    EXPECT_FALSE(clr.Create(400, 700, line));
    EXPECT_FALSE(clr.Create(400, 700, black));
    EXPECT_FALSE(clr.Create(700, 400, nullptr));
    EXPECT_FALSE(clr.Created);
    double rgb[3] = {1.0, 1.0, 1.0};
    clr.SpectrumToRGB(rgb, nullptr);
    for (double value : rgb) EXPECT_EQ(value, 0.0);

    ASSERT_TRUE(clr.Create(400, 700, nullptr));
    EXPECT_FALSE(clr.Create(500, 600, nullptr));
    EXPECT_EQ(clr.LowWavelength, 400);
    EXPECT_EQ(clr.XBar.size(), 301u);
    EXPECT_TRUE(clr.Destroy());
    EXPECT_FALSE(clr.XBar);
    EXPECT_TRUE(clr.Create(500, 600, nullptr));
}

} // namespace
} // namespace k7::test
