#pragma once

#include "baselib/Buffer.h"

namespace k7 {

/// From a spectrum, sampled once per nanometre, to the CIE 1931 tristimulus values of the 2 degree observer
/// and to linear RGB of a set of primaries.
class CLRK7 {
public:
    /// Prepares for spectra from `lowNm` to `highNm`, both inclusive. `primaries` is null (NTSC 1953 under a
    /// white of x 0.313, y 0.329) or holds x, y, z of red, green, blue and white; z is always taken as 1 - x
    /// - y. False if the primaries span no colours, allocation fails, or it was created already; only the
    /// last leaves the object unchanged.
    [[nodiscard]] bool Create(int lowNm, int highNm, const double* primaries);

    /// Frees the arrays; harmless if not created. Always true.
    bool Destroy();

    /// `spectrum` has one entry per nanometre of the range, in any linear unit; 1.0 throughout gives Y = 1.
    /// Zeros if not created.
    void SpectrumToXYZ(double xyz[3], const double* spectrum) const;

    /// Not clamped: a channel may be negative or above 1.
    void SpectrumToRGB(double rgb[3], const double* spectrum) const;

    bool Created = false;
    int LowWavelength = 380; ///< nm, first and last sample of every spectrum
    int HighWavelength = 780;
    double XYZToRGB[3][3] = {}; ///< row 0 gives R, row 1 G, row 2 B
    double RGBToXYZ[3][3] = {}; ///< row 0 gives X, row 1 Y, row 2 Z
    Buffer<double> XBar;        ///< colour-matching functions, entry i at LowWavelength + i
    Buffer<double> YBar;
    Buffer<double> ZBar;
    double Normaliser = 1.0;     ///< 1 / sum of YBar
    double Primaries[4][3] = {}; ///< x, y, z of red, green, blue, white

private:
    bool BuildMatrices();
    bool BuildMatchingFunctions();
};

} // namespace k7
