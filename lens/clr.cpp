#include "lens/clr.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <utility>

namespace k7 {

namespace {

using Matrix = double[3][3];

/// The CIE 1931 2 degree standard observer: x-bar, y-bar and z-bar from 380 to 780 nm in steps of 5 nm, to
/// the four decimals of the standard's table (CIE publication 15, Colorimetry).
constexpr double kObserver[81][3] = {
    // clang-format off
    {0.0014, 0.0000, 0.0065}, {0.0022, 0.0001, 0.0105}, {0.0042, 0.0001, 0.0201}, // 380
    {0.0076, 0.0002, 0.0362}, {0.0143, 0.0004, 0.0679}, {0.0232, 0.0006, 0.1102}, // 395
    {0.0435, 0.0012, 0.2074}, {0.0776, 0.0022, 0.3713}, {0.1344, 0.0040, 0.6456}, // 410
    {0.2148, 0.0073, 1.0391}, {0.2839, 0.0116, 1.3856}, {0.3285, 0.0168, 1.6230}, // 425
    {0.3483, 0.0230, 1.7471}, {0.3481, 0.0298, 1.7826}, {0.3362, 0.0380, 1.7721}, // 440
    {0.3187, 0.0480, 1.7441}, {0.2908, 0.0600, 1.6692}, {0.2511, 0.0739, 1.5281}, // 455
    {0.1954, 0.0910, 1.2876}, {0.1421, 0.1126, 1.0419}, {0.0956, 0.1390, 0.8130}, // 470
    {0.0580, 0.1693, 0.6162}, {0.0320, 0.2080, 0.4652}, {0.0147, 0.2586, 0.3533}, // 485
    {0.0049, 0.3230, 0.2720}, {0.0024, 0.4073, 0.2123}, {0.0093, 0.5030, 0.1582}, // 500
    {0.0291, 0.6082, 0.1117}, {0.0633, 0.7100, 0.0782}, {0.1096, 0.7932, 0.0573}, // 515
    {0.1655, 0.8620, 0.0422}, {0.2257, 0.9149, 0.0298}, {0.2904, 0.9540, 0.0203}, // 530
    {0.3597, 0.9803, 0.0134}, {0.4334, 0.9950, 0.0087}, {0.5121, 1.0000, 0.0057}, // 545
    {0.5945, 0.9950, 0.0039}, {0.6784, 0.9786, 0.0027}, {0.7621, 0.9520, 0.0021}, // 560
    {0.8425, 0.9154, 0.0018}, {0.9163, 0.8700, 0.0017}, {0.9786, 0.8163, 0.0014}, // 575
    {1.0263, 0.7570, 0.0011}, {1.0567, 0.6949, 0.0010}, {1.0622, 0.6310, 0.0008}, // 590
    {1.0456, 0.5668, 0.0006}, {1.0026, 0.5030, 0.0003}, {0.9384, 0.4412, 0.0002}, // 605
    {0.8544, 0.3810, 0.0002}, {0.7514, 0.3210, 0.0001}, {0.6424, 0.2650, 0.0000}, // 620
    {0.5419, 0.2170, 0.0000}, {0.4479, 0.1750, 0.0000}, {0.3608, 0.1382, 0.0000}, // 635
    {0.2835, 0.1070, 0.0000}, {0.2187, 0.0816, 0.0000}, {0.1649, 0.0610, 0.0000}, // 650
    {0.1212, 0.0446, 0.0000}, {0.0874, 0.0320, 0.0000}, {0.0636, 0.0232, 0.0000}, // 665
    {0.0468, 0.0170, 0.0000}, {0.0329, 0.0119, 0.0000}, {0.0227, 0.0082, 0.0000}, // 680
    {0.0158, 0.0057, 0.0000}, {0.0114, 0.0041, 0.0000}, {0.0081, 0.0029, 0.0000}, // 695
    {0.0058, 0.0021, 0.0000}, {0.0041, 0.0015, 0.0000}, {0.0029, 0.0010, 0.0000}, // 710
    {0.0020, 0.0007, 0.0000}, {0.0014, 0.0005, 0.0000}, {0.0010, 0.0004, 0.0000}, // 725
    {0.0007, 0.0002, 0.0000}, {0.0005, 0.0002, 0.0000}, {0.0003, 0.0001, 0.0000}, // 740
    {0.0002, 0.0001, 0.0000}, {0.0002, 0.0001, 0.0000}, {0.0001, 0.0000, 0.0000}, // 755
    {0.0001, 0.0000, 0.0000}, {0.0001, 0.0000, 0.0000}, {0.0000, 0.0000, 0.0000}, // 770
    // clang-format on
};
constexpr int kObserverLow = 380;
constexpr int kObserverHigh = 780;
constexpr int kObserverStep = 5;

/// NTSC 1953 chromaticities, and a white close to daylight at 6500 K.
constexpr double kDefaultPrimaries[4][3] = {
    {0.67, 0.33, 0.0}, {0.21, 0.71, 0.0}, {0.14, 0.08, 0.0}, {0.313, 0.329, 0.0}};

/// Brings the largest entry of a column, from row `column` down, onto the diagonal. False if it is 0.
template <std::size_t columns>
bool Pivot(double (&rows)[3][columns], int column) {
    int best = column;
    for (int r = column + 1; r < 3; ++r)
        if (std::abs(rows[r][column]) > std::abs(rows[best][column])) best = r;
    std::swap(rows[best], rows[column]);
    return rows[column][column] != 0.0;
}

/// Solves m s = w by Gaussian elimination; false for a singular matrix.
bool Solve(const Matrix& m, const double (&w)[3], double (&s)[3]) {
    double rows[3][4];
    for (int r = 0; r < 3; ++r) {
        std::copy_n(m[r], 3, rows[r]);
        rows[r][3] = w[r];
    }
    for (int c = 0; c < 3; ++c) {
        if (!Pivot(rows, c)) return false;
        for (int r = c + 1; r < 3; ++r) {
            const double factor = rows[r][c] / rows[c][c];
            for (int i = c; i < 4; ++i) rows[r][i] -= factor * rows[c][i];
        }
    }
    for (int r = 2; r >= 0; --r) {
        double rest = rows[r][3];
        for (int i = r + 1; i < 3; ++i) rest -= rows[r][i] * s[i];
        s[r] = rest / rows[r][r];
    }
    return true;
}

/// Gauss-Jordan elimination; false for a singular matrix.
bool Invert(const Matrix& m, Matrix& inverse) {
    double rows[3][6] = {};
    for (int r = 0; r < 3; ++r) {
        std::copy_n(m[r], 3, rows[r]);
        rows[r][3 + r] = 1.0;
    }
    for (int c = 0; c < 3; ++c) {
        if (!Pivot(rows, c)) return false;
        const double pivot = rows[c][c];
        for (double& value : rows[c]) value /= pivot;
        for (int r = 0; r < 3; ++r) {
            if (r == c) continue;
            const double factor = rows[r][c];
            for (int i = 0; i < 6; ++i) rows[r][i] -= factor * rows[c][i];
        }
    }
    for (int r = 0; r < 3; ++r) std::copy_n(rows[r] + 3, 3, inverse[r]);
    return true;
}

/// A matching function at a whole wavelength: from the row below in equal steps towards the next.
double Observer(int nm, int function) {
    if (nm < kObserverLow || nm > kObserverHigh) return 0.0;
    const int row = std::min((nm - kObserverLow) / kObserverStep, 79);
    double value = kObserver[row][function];
    const double step = (kObserver[row + 1][function] - value) / 5.0;
    for (int i = kObserverLow + kObserverStep * row; i < nm; ++i) value += step;
    return value;
}

} // namespace

bool CLRK7::Create(int lowNm, int highNm, const double* primaries) {
    if (Created) return false;
    Created = true;
    LowWavelength = lowNm;
    HighWavelength = highNm;
    for (int i = 0; i < 4; ++i) {
        const double* xyz = primaries ? primaries + 3 * i : kDefaultPrimaries[i];
        Primaries[i][0] = xyz[0];
        Primaries[i][1] = xyz[1];
        Primaries[i][2] = 1.0 - xyz[0] - xyz[1];
    }
    if (BuildMatrices() && BuildMatchingFunctions()) return true;
    Destroy();
    return false;
}

bool CLRK7::Destroy() {
    XBar = {};
    YBar = {};
    ZBar = {};
    Created = false;
    return true;
}

/// The primaries' chromaticities, each scaled so that R = G = B = 1 is the white at Y = 1.
bool CLRK7::BuildMatrices() {
    const double* white = Primaries[3];
    if (!(white[1] > 0.0)) return false;
    const double w[3] = {white[0] / white[1], 1.0, white[2] / white[1]};
    Matrix p;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) p[r][c] = Primaries[c][r];
    double scale[3];
    if (!Solve(p, w, scale)) return false;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) RGBToXYZ[r][c] = p[r][c] * scale[c];
    return Invert(RGBToXYZ, XYZToRGB);
}

bool CLRK7::BuildMatchingFunctions() {
    const std::int64_t count = static_cast<std::int64_t>(HighWavelength) - LowWavelength + 1;
    if (count < 1) return false;
    Buffer<double>* const functions[3] = {&XBar, &YBar, &ZBar};
    for (int f = 0; f < 3; ++f) {
        *functions[f] = Buffer<double>(static_cast<std::size_t>(count), "clr");
        if (!*functions[f]) return false;
        int nm = LowWavelength;
        for (double& value : *functions[f]) value = Observer(nm++, f);
    }
    double sum = 0.0;
    for (double value : YBar) sum += value;
    Normaliser = sum > 0.0 ? 1.0 / sum : 1.0;
    return true;
}

void CLRK7::SpectrumToXYZ(double xyz[3], const double* spectrum) const {
    std::array<double, 3> sums{};
    for (std::size_t i = 0; i < XBar.size(); ++i) {
        sums[0] += spectrum[i] * XBar[i];
        sums[1] += spectrum[i] * YBar[i];
        sums[2] += spectrum[i] * ZBar[i];
    }
    for (std::size_t i = 0; i < 3; ++i) xyz[i] = sums[i] * Normaliser;
}

void CLRK7::SpectrumToRGB(double rgb[3], const double* spectrum) const {
    double xyz[3];
    SpectrumToXYZ(xyz, spectrum);
    for (int r = 0; r < 3; ++r)
        rgb[r] = XYZToRGB[r][0] * xyz[0] + XYZToRGB[r][1] * xyz[1] + XYZToRGB[r][2] * xyz[2];
}

} // namespace k7
