#include "lens/DiffractionTables.h"

#include "lens/LineStepper.h"
#include "library/Chunks.h"
#include "library/Numbers.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace k7 {

namespace {

constexpr double kTwoPi = 6.2831852;
static_assert(kTwoPi == 2.0 * kFlarePi);

constexpr int kLowNm = 400;
constexpr int kHighNm = 700;
constexpr std::size_t kSamples = kHighNm - kLowNm + 1;

/// The value, clamped to 0 to 1; NaN becomes 0.
template <class Real>
Real Unit(Real value) {
    return value > 0 ? std::min<Real>(value, 1) : 0;
}

bool TooLarge(int side) {
    return static_cast<double>(side) * side > kMostCells;
}

/// Sizes a kernel and allocates its cells. False if allocation fails.
template <class Real, class Cell>
bool Resize(Kernel<Cell>& kernel, int radius, const PixelReach& seen) {
    kernel.SetSize(radius, seen);
    const std::size_t count =
        static_cast<std::size_t>(kernel.Columns()) * static_cast<std::size_t>(kernel.Rows());
    kernel.Cells = Buffer<Cell>(count, kFlareSource<Real>);
    return static_cast<bool>(kernel.Cells);
}

/// Half the wave number, in radians per metre, of a wavelength in nm.
template <class Real>
double HalfWaveNumber(Real wavelength) {
    return kTwoPi / static_cast<Real>(wavelength * 1e-9) * 0.5;
}

/// Sine of an angle in degrees.
template <class Real>
Real Sine(Real angle) {
    return std::sin(static_cast<Real>(angle / 180.0 * kFlarePi));
}

/// A grating: what does not depend on wavelength and angle.
template <class Real>
class Slits {
public:
    Slits(Real widthMm, Real spacingMm, int count)
        : width_(static_cast<Real>(widthMm * 0.001))
        , spacing_(static_cast<Real>(spacingMm * 0.001))
        , count_(count) {}

    /// The pattern of one slit, (sin b / b)^2, times the interference of all, (sin N g / sin g)^2.
    Real Intensity(double halfWaveNumber, double sine) const {
        constexpr double kSmallest = 1e-35;
        const double beta = std::max(width_ * halfWaveNumber * sine, kSmallest);
        const double gamma = halfWaveNumber * spacing_ * sine;
        const double sinBeta = std::sin(beta);
        const double envelope = sinBeta * sinBeta / (beta * beta);
        const double p = std::sin(static_cast<float>(count_ * gamma));
        const double sinGamma = std::sin(gamma);
        const double q = std::max(sinGamma * sinGamma, kSmallest);
        return static_cast<Real>(p * p / q * envelope);
    }

private:
    double width_;
    double spacing_;
    int count_;
};

/// The brightest of the three.
double Largest(const double (&rgb)[3]) {
    return std::max({rgb[0], rgb[1], rgb[2]});
}

/// Adds one fringe to the shades of a kernel: a line that starts at (x, y), counted from the centre, and runs
/// outward.
template <class Real>
void DrawFringe(HaloKernel<Real>& halo, std::int64_t x, std::int64_t y, LineStepper<Real> line, Real weight) {
    if (line.Major == 0) return;
    const auto within = [](std::int64_t i, int reach) { return i >= -reach && i <= reach; };
    const auto shade = [&](std::int64_t column, std::int64_t row, Real more) {
        if (!within(column, halo.Reach.X) || !within(row, halo.Reach.Y)) return;
        const std::int64_t cell = (row + halo.Reach.Y) * halo.Columns() + column + halo.Reach.X;
        halo.Cells[static_cast<std::size_t>(cell)].Shade += more;
    };
    // A side pixel may be visible where its main pixel no longer is, unless that lies beyond the kernel.
    const int lastX = std::min(halo.Reach.X + 1, halo.Radius);
    const int lastY = std::min(halo.Reach.Y + 1, halo.Radius);
    const Real slope = Real(2) / static_cast<Real>(line.Major);
    for (; line.Step <= line.Major; line.Next()) {
        const std::int64_t column = x + line.X;
        const std::int64_t row = y + line.Y;
        if (!within(column, lastX) || !within(row, lastY)) return; // it does not come back

        // The fringe fades in over the first half of its length.
        const Real ramp = std::min<Real>(1, static_cast<Real>(line.Step) * slope);
        const Real coverage = line.Coverage();
        shade(column, row, (1 - std::abs(coverage)) * ramp * weight);
        shade(column + line.SideX(coverage), row + line.SideY(coverage), std::abs(coverage) * ramp * weight);
    }
}

/// A point at a distance from the centre of a kernel; if pixels are not square it moves outward, as far as
/// the kernel's corners.
template <class Real>
struct Direction {
    Real X, Y;
    Direction(Real angle, Real length, float aspect)
        : X(std::cos(angle) * length)
        , Y(std::sin(angle) * length) {
        if (aspect < 1.0f)
            X /= aspect;
        else
            Y *= aspect;
    }
};

} // namespace

float PixelDistance(float dx, float dy, float aspect) {
    if (aspect < 1.0f) return std::sqrt(dx * dx / aspect / aspect + dy * dy);
    return std::sqrt(dy * dy * aspect * aspect + dx * dx);
}

template <class Real>
Real SlitIntensity(Real wavelength, Real angle, Real slitWidth, Real slitSpacing, int slits) {
    const Slits<Real> row(slitWidth, slitSpacing, slits);
    return row.Intensity(HalfWaveNumber(wavelength), Sine(angle));
}

template <class Real>
bool BuildDiffractionTable(CLRK7& clr, const Grating<Real>& grating, int count, int entries,
                           DiffractionTable<Real>& table) {
    table.Count = count;
    table.Entries = {};
    if (count < 1 || entries < 1) return true;
    table.Entries = Buffer<DiffractionEntry<Real>>(static_cast<std::size_t>(entries), kFlareSource<Real>);
    if (!table.Entries || !clr.Create(kLowNm, kHighNm, nullptr)) return false;

    constexpr Real kSmallestAngle = static_cast<Real>(0.00001);
    const Real step = count > 1 ? grating.LargestAngle / static_cast<Real>(count - 1) : 0;
    const Slits<Real> slits(grating.SlitWidth, grating.SlitSpacing, grating.Slits);
    std::array<double, kSamples> halfWaveNumbers;
    for (std::size_t i = 0; i < kSamples; ++i)
        halfWaveNumbers[i] = HalfWaveNumber(static_cast<Real>(kLowNm + static_cast<int>(i)));
    std::array<double, kSamples> spectrum;
    Real norm = 0;
    for (int i = 0; i < entries; ++i) {
        if (AbortRequested()) break;
        const Real angle = std::max(static_cast<Real>(i) * step, kSmallestAngle);
        const double sine = Sine(angle);
        std::transform(halfWaveNumbers.begin(), halfWaveNumbers.end(), spectrum.begin(),
                       [&](double half) { return slits.Intensity(half, sine); });
        double rgb[3];
        clr.SpectrumToRGB(rgb, spectrum.data());
        if (i == 0) norm = static_cast<Real>(1.0 / Largest(rgb));
        const auto gain = [&](double value) { return Unit(static_cast<Real>(value * norm)) * grating.Gain; };
        table.Entries[static_cast<std::size_t>(i)] = {gain(rgb[0]), gain(rgb[1]), gain(rgb[2]), 0};
    }
    return clr.Destroy() && !AbortRequested();
}

template <class Real>
bool MakeSquareTable(const DiffractionTable<Real>& radial, float aspect, const PixelReach& seen,
                     HaloKernel<Real>& square) {
    const int radius = radial.Count;
    if (!Resize<Real>(square, radius, seen)) return false;

    DiffractionEntry<Real>* to = square.Cells.begin();
    for (int dy = -square.Reach.Y; dy <= square.Reach.Y; ++dy) {
        if (AbortRequested()) return false;
        for (int dx = -square.Reach.X; dx <= square.Reach.X; ++dx, ++to) {
            const float distance = PixelDistance(static_cast<float>(dx), static_cast<float>(dy), aspect);
            const int i = Trunc(distance);
            if (i >= radius - 1) {
                *to = {};
                continue;
            }
            const DiffractionEntry<Real>& a = radial.Entries[static_cast<std::size_t>(i)];
            const DiffractionEntry<Real>& b = radial.Entries[static_cast<std::size_t>(i) + 1];
            const Real f = distance - static_cast<float>(i);
            *to = {a.R + (b.R - a.R) * f, a.G + (b.G - a.G) * f, a.B + (b.B - a.B) * f, 0};
        }
    }
    return true;
}

template <class Real>
void AddFringes(HaloKernel<Real>& halo, int count, Real strength, float aspect, Ran1& random) {
    const Real r = static_cast<Real>(halo.Radius);
    const Real most = Unit(strength);
    for (int i = 0; i < std::min(count, kMostFringes) && !AbortRequested(); ++i) {
        const Real u1 = random();
        const Real u2 = random();
        const Real u3 = random();
        const Real angle = u1 * static_cast<Real>(kTwoPi);
        const Real inner = r - (u3 * static_cast<Real>(0.4) + static_cast<Real>(0.5)) * r;
        const Direction<Real> from(angle, inner, aspect);
        const Direction<Real> to(angle, r, aspect);
        const std::int64_t x = Trunc(from.X + r);
        const std::int64_t y = Trunc(from.Y + r);
        const LineStepper<Real> line(Trunc(to.X + r) - x, Trunc(to.Y + r) - y);
        DrawFringe(halo, x - halo.Radius, y - halo.Radius, line, u2 * most);
    }
    for (DiffractionEntry<Real>& entry : halo.Cells) {
        const Real light = Unit(1 - entry.Shade);
        entry.R *= light;
        entry.G *= light;
        entry.B *= light;
    }
}

template <class Real>
void MonoBlend(DiffractionTable<Real>& table, Real mono, Real gain) {
    if (!(mono >= static_cast<Real>(0.00001))) return;
    const Real start = std::min<Real>(mono * gain, 1);
    const Real slope = start / static_cast<Real>(std::max(table.Count, 2) - 1);
    int i = 0;
    for (DiffractionEntry<Real>& entry : table.Entries) {
        const Real white = start - static_cast<Real>(i++) * slope;
        if (white < 0) return;
        entry.R = (1 - white) * entry.R + white;
        entry.G = (1 - white) * entry.G + white;
        entry.B = (1 - white) * entry.B + white;
    }
}

template <class Real>
bool BuildGlowKernel(Real radius, Real strength, float aspect, const PixelReach& seen, Ran1& random,
                     GlowKernel<Real>& glow) {
    constexpr Real kSmallestRadius = static_cast<Real>(0.01);
    if (!(radius >= kSmallestRadius)) radius = kSmallestRadius;
    const float whole = std::ceil(static_cast<float>(radius));
    if (!(whole < 32768.0f)) return false;
    const int reach = static_cast<int>(whole);
    if (TooLarge(2 * reach + 1) || !Resize<Real>(glow, reach, seen)) return false;

    // Every pixel of the square draws a random number and counts in the sum, visible or not.
    Real sum = 0;
    Real* cell = glow.Cells.begin();
    for (int dy = -reach; dy <= reach; ++dy) {
        if (AbortRequested()) return false;
        const bool rowSeen = std::abs(dy) <= glow.Reach.Y;
        for (int dx = -reach; dx <= reach; ++dx) {
            const float distance = PixelDistance(static_cast<float>(dx), static_cast<float>(dy), aspect);
            const Real cone = std::max<Real>((radius - distance) / radius, 0);
            const Real weight = random() * cone;
            sum += weight;
            if (rowSeen && std::abs(dx) <= glow.Reach.X) *cell++ = weight;
        }
    }
    const Real scale = radius * strength / sum;
    for (Real& weight : glow.Cells) weight *= scale;
    return true;
}

template <class Real>
bool FlareTables<Real>::MakeHalo(CLRK7& clr, const HaloInputs<Real>& inputs, Ran1& random) {
    return halo_.Make(inputs, random, [&](HaloKernel<Real>& halo) {
        // The halo reaches to the first dark ring of 700 nm light.
        constexpr double kDegrees = 57.295827908797776;
        const float ring = static_cast<float>(7e-7 / (inputs.Aperture * 0.001));
        if (!(inputs.Aperture > 0) || !(ring <= 1.0f)) return false;
        const Real largest = static_cast<Real>(std::asin(ring) * kDegrees);

        // One entry per pixel, which is 0.001 degrees.
        const int count = 1 + Trunc(largest / static_cast<Real>(0.001));
        if (TooLarge(2 * count + 1)) return false;
        const float farthest =
            PixelDistance(static_cast<float>(std::min(count, inputs.Seen.X)),
                          static_cast<float>(std::min(count, inputs.Seen.Y)), inputs.Aspect);
        const int entries = std::min(count, Trunc(farthest) + 2);
        DiffractionTable<Real> radial;
        const Grating<Real> slit = {inputs.Aperture, inputs.Aperture, 1, largest, inputs.Gain};
        if (!BuildDiffractionTable(clr, slit, count, entries, radial)) return false;
        if (!MakeSquareTable(radial, inputs.Aspect, inputs.Seen, halo)) return false;
        AddFringes(halo, inputs.Fringes, inputs.FringeGain, inputs.Aspect, random);
        return !AbortRequested();
    });
}

template <class Real>
bool FlareTables<Real>::MakeStreaks(CLRK7& clr, const StreakInputs<Real>& inputs) {
    constexpr Grating<Real> kGrating = {Real(1.0), Real(1.2), 2, Real(0.07), 1};
    Ran1 none;
    return streaks_.Make(inputs, none, [&](DiffractionTable<Real>& table) {
        Grating<Real> grating = kGrating;
        grating.Gain = inputs.Gain;
        if (!BuildDiffractionTable(clr, grating, inputs.Count, inputs.Entries, table)) return false;
        MonoBlend(table, inputs.Mono, inputs.Gain);
        return true;
    });
}

template <class Real>
bool FlareTables<Real>::MakeGlow(const GlowInputs<Real>& inputs, Ran1& random) {
    return glow_.Make(inputs, random, [&](GlowKernel<Real>& glow) {
        return BuildGlowKernel(inputs.Radius, inputs.Strength, inputs.Aspect, inputs.Seen, random, glow);
    });
}

#define K7_DIFFRACTION(Real)                                                                                 \
    template Real SlitIntensity(Real, Real, Real, Real, int);                                                \
    template bool BuildDiffractionTable(CLRK7&, const Grating<Real>&, int, int, DiffractionTable<Real>&);    \
    template bool MakeSquareTable(const DiffractionTable<Real>&, float, const PixelReach&,                   \
                                  HaloKernel<Real>&);                                                        \
    template void AddFringes(HaloKernel<Real>&, int, Real, float, Ran1&);                                    \
    template void MonoBlend(DiffractionTable<Real>&, Real, Real);                                            \
    template bool BuildGlowKernel(Real, Real, float, const PixelReach&, Ran1&, GlowKernel<Real>&);           \
    template class FlareTables<Real>;
K7_DIFFRACTION(double)
K7_DIFFRACTION(float)
#undef K7_DIFFRACTION

} // namespace k7
