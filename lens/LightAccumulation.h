#pragma once

#include "baselib/Buffer.h"
#include "lens/DiffractionTables.h"
#include "lens/Lights.h"
#include "lens/Streaks.h"

#include <limits>

namespace k7 {

/// Scatters lights into planes. Workers divide the rows of the planes: each goes through all lights and
/// writes only to its own rows. A cell is summed in the order of the lights, and of each light in the order
/// halo, streaks, glow, whichever worker it belongs to.
template <class Real>
class LightAccumulation {
public:
    /// Prepares a frame. The lights and tables belong to the caller and must live until it is done. The
    /// planes cover what the lights reach, or with `whole` the frame. A cell whose channels have all reached
    /// `white` need not grow further. False if allocation fails.
    [[nodiscard]] bool Prepare(const LightList& lights, const FlareTables<Real>& tables,
                               const StreakSetup<Real>& streaks, const StreakPairs<Real>& pairs, bool whole,
                               Real white = std::numeric_limits<Real>::infinity());

    /// Frees what Prepare has made.
    void Free();

    /// The part of the frame that the planes cover.
    const PixelBox& Box() const { return box_; }

    /// Makes rows `first` to `last` of the planes, counted from the bottom of the box.
    void AccumulateLights(int first, int last);

    LightPlanes<Real> Planes() const { return {cells_.data(), box_}; }

private:
    PixelBox Reach() const;
    void AccumulateBand(int first, int last);

    const LightList* lights_ = nullptr;
    const FlareTables<Real>* tables_ = nullptr;
    StreakSet<Real> streaks_;
    Real white_ = 0;
    PixelBox frame_{};
    PixelBox box_{};
    ImageBuffer<LightSum<Real>> cells_;
};

} // namespace k7
