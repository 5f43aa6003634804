#pragma once

#include "baselib/Buffer.h"
#include "frame/Random.h"
#include "lens/clr.h"

#include <algorithm>
#include <limits>
#include <type_traits>

namespace k7 {

// What the light of one bright pixel becomes behind the aperture of a lens: Fraunhofer diffraction at
// parallel slits, evaluated over the visible spectrum and converted to colour (Born and Wolf, Principles of
// Optics, 8.5 and 8.6). Real is the number type of the tables, double or float. Whether a step runs in Real,
// in float or in double is part of each definition: frames are the same to the word. Functions that make
// something return false if allocation fails.

/// The source file under which the allocator records the memory of a flare: Flare computes in double, Flare2
/// in float.
template <class Real>
inline constexpr const char* kFlareSource = std::is_same_v<Real, double> ? "Flare" : "Flare2";

/// The flares' own value of pi; frames depend on its last digit.
inline constexpr double kFlarePi = 3.1415926;

/// Gains on the red, green and blue word of a light. Shade is used while fringes are added to a halo, and
/// pads the entry to four numbers.
template <class Real>
struct DiffractionEntry {
    Real R, G, B, Shade;
};

/// Colours along the angle from the axis: entry i belongs to i x step.
template <class Real>
struct DiffractionTable {
    int Count = 0;                          ///< number of entries that the angle range is divided into
    Buffer<DiffractionEntry<Real>> Entries; ///< the first ones, as many as were asked for
};

/// How far from its light a kernel can be visible in a picture, in pixels: no farther than from edge to edge.
struct PixelReach {
    int X = std::numeric_limits<int>::max();
    int Y = std::numeric_limits<int>::max();

    bool operator==(const PixelReach&) const = default;
};

/// What a light casts around itself: a square of 2 Radius + 1 pixels a side, of which the 2 Reach + 1 columns
/// and rows around the centre are kept, row by row.
template <class Cell>
struct Kernel {
    int Side() const { return 2 * Radius + 1; }
    int Columns() const { return 2 * Reach.X + 1; }
    int Rows() const { return 2 * Reach.Y + 1; }
    void SetSize(int radius, const PixelReach& seen) {
        Radius = radius;
        Reach = {std::min(radius, seen.X), std::min(radius, seen.Y)};
    }

    int Radius = 0;
    PixelReach Reach{0, 0}; ///< no larger than Radius
    Buffer<Cell> Cells;
};

/// Of gains for each channel.
template <class Real>
using HaloKernel = Kernel<DiffractionEntry<Real>>;

/// Of one weight for all channels.
template <class Real>
using GlowKernel = Kernel<Real>;

/// The most cells that a kernel may have (an 11585 pixel square, more than an 8K frame asks for at the ends
/// of the sliders); a larger one is treated as a failed allocation.
inline constexpr double kMostCells = 134217728.0;

/// Fringes beyond this number are ignored: a halo is black long before.
inline constexpr int kMostFringes = 100000;

/// Distance from (0, 0), in pixels of a picture with pixel shape `aspect`, where neither axis shrinks.
float PixelDistance(float dx, float dy, float aspect);

/// Intensity behind `slits` parallel slits, 1 on the axis of a single one: wavelength in nm, angle in
/// degrees, width of a slit and distance of their centres in mm.
template <class Real>
Real SlitIntensity(Real wavelength, Real angle, Real slitWidth, Real slitSpacing, int slits);

/// A grating, the range of angles from the axis and what the axis shines with.
template <class Real>
struct Grating {
    Real SlitWidth;   ///< mm
    Real SlitSpacing; ///< mm
    int Slits;
    Real LargestAngle; ///< degrees
    Real Gain;         ///< of the axis entry's largest channel
};

/// Colours at `count` angles from 0 to the largest, of which the first `entries` are computed.
template <class Real>
bool BuildDiffractionTable(CLRK7& clr, const Grating<Real>& grating, int count, int entries,
                           DiffractionTable<Real>& table);

/// Rotates the table around its axis, one entry per pixel of radius; round even if pixels are not square.
template <class Real>
bool MakeSquareTable(const DiffractionTable<Real>& radial, float aspect, const PixelReach& seen,
                     HaloKernel<Real>& square);

/// Darkens a halo by `count` spokes from the inside to the rim; each takes away at most `strength`, 0 to 1.
template <class Real>
void AddFringes(HaloKernel<Real>& halo, int count, Real strength, float aspect, Ran1& random);

/// Pulls the first entries towards white, by mono x gain (at most 1) at the axis and linearly less from there
/// on.
template <class Real>
void MonoBlend(DiffractionTable<Real>& table, Real mono, Real gain);

/// A cone of noise, `radius` in pixels, whose weights add up to radius x strength.
template <class Real>
bool BuildGlowKernel(Real radius, Real strength, float aspect, const PixelReach& seen, Ran1& random,
                     GlowKernel<Real>& glow);

// The three tables of a flare, each with everything that it is made from except the random number generator.

template <class Real>
struct HaloInputs {
    Real Aperture; ///< mm
    Real Gain;
    int Fringes;
    Real FringeGain;
    float Aspect;
    PixelReach Seen{};

    bool operator==(const HaloInputs&) const = default;
};

template <class Real>
struct StreakInputs {
    int Count;   ///< angles
    int Entries; ///< how many of them are read
    Real Gain;
    Real Mono;

    bool operator==(const StreakInputs&) const = default;
};

template <class Real>
struct GlowInputs {
    Real Radius; ///< pixels
    Real Strength;
    float Aspect;
    PixelReach Seen{};

    bool operator==(const GlowInputs&) const = default;
};

/// A table that is kept while its inputs are the same. The state of the generator is one of them, and is left
/// as if the table had been made again.
template <class Inputs, class Table>
class KeptTable {
public:
    /// `build` fills a table, and returns false if it cannot.
    template <class Build>
    bool Make(const Inputs& inputs, Ran1& random, Build build) {
        if (valid_ && inputs == inputs_ && random == before_) {
            random = after_;
            return true;
        }
        Made = {};
        inputs_ = inputs;
        before_ = random;
        valid_ = build(Made);
        after_ = random;
        return valid_;
    }

    Table Made;

private:
    bool valid_ = false;
    Inputs inputs_{};
    Ran1 before_;
    Ran1 after_;
};

/// The tables of a frame. A call that returns false has no table: allocation failed, or the aperture has no
/// first dark ring.
template <class Real>
class FlareTables {
public:
    [[nodiscard]] bool MakeHalo(CLRK7& clr, const HaloInputs<Real>& inputs, Ran1& random);
    [[nodiscard]] bool MakeStreaks(CLRK7& clr, const StreakInputs<Real>& inputs);
    [[nodiscard]] bool MakeGlow(const GlowInputs<Real>& inputs, Ran1& random);

    const HaloKernel<Real>& Halo() const { return halo_.Made; }
    const DiffractionTable<Real>& Streaks() const { return streaks_.Made; }
    const GlowKernel<Real>& Glow() const { return glow_.Made; }

private:
    KeptTable<HaloInputs<Real>, HaloKernel<Real>> halo_;
    KeptTable<StreakInputs<Real>, DiffractionTable<Real>> streaks_;
    KeptTable<GlowInputs<Real>, GlowKernel<Real>> glow_;
};

} // namespace k7
