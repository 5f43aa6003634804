#pragma once

#include "baselib/Buffer.h"
#include "lens/DiffractionTables.h"
#include "lens/Lights.h"
#include "lens/LineStepper.h"

#include <array>
#include <cstdint>

namespace k7 {

/// Streaks beyond this number are not drawn.
inline constexpr int kMostStreaks = 1000;

/// The random part of a streak: its direction within a half circle, in radians, and its length from 0 to 1.
template <class Real>
struct StreakPair {
    Real Angle, Length;
};
template <class Real>
using StreakPairs = std::array<StreakPair<Real>, kMostStreaks>;

template <class Real>
struct StreakSetup {
    int Count;
    Real Length;   ///< pixels; a streak is one to two lengths long on either side of its light
    Real Rotation; ///< degrees
    float Aspect;
    int Width, Height; ///< of the frame
};

/// The number of entries of the streak table that lights of such a frame can read: the streak length, but no
/// more than the frame's diagonal.
template <class Real>
int StreakEntries(const StreakSetup<Real>& setup);

/// The streaks that every light of a frame casts. They are summed in the order of their numbers, each in two
/// arms outward from the light.
template <class Real>
class StreakSet {
public:
    /// Computes what does not depend on the light, for lights within `lights`. `table` belongs to the caller
    /// and must outlive the frame. False if allocation fails.
    [[nodiscard]] bool Prepare(const StreakSetup<Real>& setup, const StreakPairs<Real>& pairs,
                               const DiffractionTable<Real>& table, const PixelBox& lights);

    /// Frees what Prepare has made.
    void Free();

    /// How far from a light its streaks reach at most, in pixels.
    int ReachX() const;
    int ReachY() const;

    /// Adds a light's streaks to the rows `first` to `last` of the planes, which hold all that a light can
    /// reach.
    void Add(const Light& light, const LightPlanes<Real>& planes, int first, int last) const;

private:
    /// A step of an arm: its two pixels as offsets from the light, and what a word of 1 adds there.
    struct Step {
        int X, Y;         ///< main pixel
        int SideX, SideY; ///< the pixel beside it
        Real Side;        ///< its share of the colour; the rest is the main pixel's
        DiffractionEntry<Real> Colour;
    };

    struct Arm {
        Real Reach;               ///< length in pixels
        Real AlongX, AlongY;      ///< its end, from the light
        std::int64_t Dx, Dy;      ///< the end in whole pixels for which the steps are stored
        std::size_t First, Count; ///< those steps; none if they are not stored
    };

    /// Offsets of main pixels from the light, inclusive.
    struct Window {
        std::int64_t Left, Right, Bottom, Top;
    };

    void KeepSteps(const PixelBox& lights);
    const Step* RowsOf(const Arm& arm, const Window& window, const Step*& step) const;
    Step StepAt(const Arm& arm, const LineStepper<Real>& line, std::int64_t fade) const;
    template <class Visit>
    void Walk(const Arm& arm, std::int64_t dx, std::int64_t dy, const Window& window, Visit visit) const;

    StreakSetup<Real> setup_{};
    const DiffractionEntry<Real>* colours_ = nullptr;
    int entries_ = 0;
    Real length_ = 0; ///< in whole pixels
    Buffer<Arm> arms_;
    Buffer<Step> steps_;
};

} // namespace k7
