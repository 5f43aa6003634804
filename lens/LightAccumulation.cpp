#include "lens/LightAccumulation.h"

#include "baselib/Vector.h"
#include "library/Chunks.h"

#include <algorithm>
#include <cstdint>
#include <type_traits>

namespace k7 {

namespace {

constexpr std::size_t kBandBytes = std::size_t{1} << 20;
constexpr std::size_t kLeastBandRows = 8;

/// Adds a light through the part of its kernel that falls on the frame's columns and a worker's rows. Cells
/// have one gain for each channel or one for all.
template <class Real, class Gain>
K7_ALWAYS_INLINE void AddRows(const Light& light, const Kernel<Gain>& kernel, const LightPlanes<Real>& planes,
                              int width, int first, int last) {
    using Four = Lanes<Real>;
    const typename Four::Vector words = {static_cast<Real>(light.R), static_cast<Real>(light.G),
                                         static_cast<Real>(light.B), 0};
    const PixelReach reach = kernel.Reach;
    const int left = std::max(0, light.X - reach.X);
    const int right = std::min(width - 1, light.X + reach.X);
    const int top = std::min(last, light.Y + reach.Y);
    for (int y = std::max(first, light.Y - reach.Y); y <= top; ++y) {
        const std::size_t kernelRow = static_cast<std::size_t>(y - light.Y + reach.Y);
        const Gain* gain = kernel.Cells.begin() + kernelRow * static_cast<std::size_t>(kernel.Columns()) +
                           static_cast<std::size_t>(left - light.X + reach.X);
        LightSum<Real>* cell = &planes.At(left, y);
        for (int x = left; x <= right; ++x, ++cell, ++gain) {
            if constexpr (std::is_same_v<Gain, Real>)
                Four::Of(*cell) += words * *gain;
            else
                Four::Of(*cell) += words * Four::Of(*gain);
        }
    }
}

// Cells of doubles fill a wide vector register; cells of floats gain nothing from one.

template <class Gain>
void AddKernel(const Light& light, const Kernel<Gain>& kernel, const LightPlanes<float>& planes, int width,
               int first, int last) {
    AddRows(light, kernel, planes, width, first, last);
}

K7_WIDE_VECTORS
void AddKernel(const Light& light, const HaloKernel<double>& kernel, const LightPlanes<double>& planes,
               int width, int first, int last) {
    AddRows(light, kernel, planes, width, first, last);
}

K7_WIDE_VECTORS
void AddKernel(const Light& light, const GlowKernel<double>& kernel, const LightPlanes<double>& planes,
               int width, int first, int last) {
    AddRows(light, kernel, planes, width, first, last);
}

} // namespace

template <class Real>
bool LightAccumulation<Real>::Prepare(const LightList& lights, const FlareTables<Real>& tables,
                                      const StreakSetup<Real>& streaks, const StreakPairs<Real>& pairs,
                                      bool whole, Real white) {
    lights_ = &lights;
    tables_ = &tables;
    white_ = white;
    frame_ = {0, 0, streaks.Width, streaks.Height};
    if (!streaks_.Prepare(streaks, pairs, tables.Streaks(), lights.Bounds())) return false;
    box_ = whole ? frame_ : Reach();
    const std::size_t cells =
        static_cast<std::size_t>(box_.Width()) * static_cast<std::size_t>(box_.Height());
    cells_ = ImageBuffer<LightSum<Real>>(cells, kFlareSource<Real>);
    return cells_.size() == cells;
}

template <class Real>
void LightAccumulation<Real>::Free() {
    streaks_.Free();
    cells_ = {};
}

template <class Real>
PixelBox LightAccumulation<Real>::Reach() const {
    PixelBox box = lights_->Bounds();
    if (lights_->size() == 0) return box;
    const PixelReach halo = tables_->Halo().Reach, glow = tables_->Glow().Reach;
    const std::int64_t x = std::max({halo.X, glow.X, streaks_.ReachX()});
    const std::int64_t y = std::max({halo.Y, glow.Y, streaks_.ReachY()});
    box.Left = static_cast<int>(std::max<std::int64_t>(box.Left - x, frame_.Left));
    box.Right = static_cast<int>(std::min<std::int64_t>(box.Right + x, frame_.Right));
    box.Bottom = static_cast<int>(std::max<std::int64_t>(box.Bottom - y, frame_.Bottom));
    box.Top = static_cast<int>(std::min<std::int64_t>(box.Top + y, frame_.Top));
    return box;
}

template <class Real>
void LightAccumulation<Real>::AccumulateLights(int first, int last) {
    // Lights touch cells in an order that no cache can predict. So all lights are added to a band of rows
    // that fits into the cache before the next band is begun.
    const std::size_t rowBytes = static_cast<std::size_t>(std::max(box_.Width(), 1)) * sizeof(LightSum<Real>);
    const int band = static_cast<int>(std::max<std::size_t>(kBandBytes / rowBytes, kLeastBandRows));
    for (int y = first; y <= last && !AbortRequested(); y += band)
        AccumulateBand(box_.Bottom + y, box_.Bottom + std::min(y + band - 1, last));
}

template <class Real>
void LightAccumulation<Real>::AccumulateBand(int first, int last) {
    const LightPlanes<Real> planes = Planes();
    std::fill(&planes.At(box_.Left, first), &planes.At(box_.Left, last) + box_.Width(), LightSum<Real>{});

    // Sums only grow, so a row in which all cells are white is finished; on a bright map that saves most of
    // the work.
    const LightSum<Real>* unsaturated = &planes.At(box_.Left, first);
    const LightSum<Real>* const end = &planes.At(box_.Left, last) + box_.Width();
    const auto isWhite = [white = white_](const LightSum<Real>& cell) {
        return cell.R >= white && cell.G >= white && cell.B >= white;
    };
    const int bottom = first;
    for (const Light& light : *lights_) {
        if (AbortRequested()) return;
        if (isWhite(*unsaturated)) {
            unsaturated = std::find_if_not(unsaturated, end, isWhite);
            if (unsaturated == end) return;
            first = bottom + static_cast<int>((unsaturated - &planes.At(box_.Left, bottom)) / box_.Width());
        }
        AddKernel(light, tables_->Halo(), planes, frame_.Right, first, last);
        streaks_.Add(light, planes, first, last);
        AddKernel(light, tables_->Glow(), planes, frame_.Right, first, last);
    }
}

template class LightAccumulation<double>;
template class LightAccumulation<float>;

} // namespace k7
