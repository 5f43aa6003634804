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

/// Adds a light to the part of a kernel round it that falls on the frame's columns and a worker's rows. A
/// kernel is gains row after row, one for each channel or one for all.
template <class Real, class Gain>
K7_ALWAYS_INLINE void AddRows(const Light& light, int radius, const Gain* kernel,
                              const LightPlanes<Real>& planes, int width, int first, int last) {
    using Four = Lanes<Real>;
    const typename Four::Vector words = {static_cast<Real>(light.R), static_cast<Real>(light.G),
                                         static_cast<Real>(light.B), 0};
    const int left = std::max(0, light.X - radius);
    const int right = std::min(width - 1, light.X + radius);
    const int top = std::min(last, light.Y + radius);
    for (int y = std::max(first, light.Y - radius); y <= top; ++y) {
        const std::size_t kernelRow = static_cast<std::size_t>(y - light.Y + radius);
        const Gain* gain = kernel + kernelRow * static_cast<std::size_t>(2 * radius + 1) +
                           static_cast<std::size_t>(left - light.X + radius);
        LightSum<Real>* cell = &planes.At(left, y);
        for (int x = left; x <= right; ++x, ++cell, ++gain) {
            if constexpr (std::is_same_v<Gain, Real>)
                Four::Of(*cell) += words * *gain;
            else
                Four::Of(*cell) += words * Four::Of(*gain);
        }
    }
}

// Cells of doubles fill a wide vector register, those of floats have no use for one.

template <class Gain>
void AddKernel(const Light& light, int radius, const Gain* kernel, const LightPlanes<float>& planes,
               int width, int first, int last) {
    AddRows(light, radius, kernel, planes, width, first, last);
}

K7_WIDE_VECTORS
void AddKernel(const Light& light, int radius, const DiffractionEntry<double>* kernel,
               const LightPlanes<double>& planes, int width, int first, int last) {
    AddRows(light, radius, kernel, planes, width, first, last);
}

K7_WIDE_VECTORS
void AddKernel(const Light& light, int radius, const double* kernel, const LightPlanes<double>& planes,
               int width, int first, int last) {
    AddRows(light, radius, kernel, planes, width, first, last);
}

} // namespace

template <class Real>
bool LightAccumulation<Real>::Prepare(const LightList& lights, const FlareTables<Real>& tables,
                                      const StreakSetup<Real>& streaks, const StreakPairs<Real>& pairs,
                                      bool whole) {
    lights_ = &lights;
    tables_ = &tables;
    frame_ = {0, 0, streaks.Width, streaks.Height};
    if (!streaks_.Prepare(streaks, pairs, tables.Streaks(), lights.Bounds())) return false;
    box_ = whole ? frame_ : Reach();
    const std::size_t cells =
        static_cast<std::size_t>(box_.Width()) * static_cast<std::size_t>(box_.Height());
    cells_ = ImageBuffer<LightSum<Real>>(cells, kFlareSource<Real>, __LINE__);
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
    const int kernel = std::max(tables_->Halo().Radius, tables_->Glow().Radius);
    const std::int64_t x = std::max(kernel, streaks_.ReachX());
    const std::int64_t y = std::max(kernel, streaks_.ReachY());
    box.Left = static_cast<int>(std::max<std::int64_t>(box.Left - x, frame_.Left));
    box.Right = static_cast<int>(std::min<std::int64_t>(box.Right + x, frame_.Right));
    box.Bottom = static_cast<int>(std::max<std::int64_t>(box.Bottom - y, frame_.Bottom));
    box.Top = static_cast<int>(std::min<std::int64_t>(box.Top + y, frame_.Top));
    return box;
}

template <class Real>
void LightAccumulation<Real>::AccumulateLights(int first, int last) {
    // Lights touch cells in no order that a cache could foresee, so that all of them go to a band of rows
    // that the cache holds before the next band has its turn.
    const std::size_t rowBytes = static_cast<std::size_t>(std::max(box_.Width(), 1)) * sizeof(LightSum<Real>);
    const int band = static_cast<int>(std::max<std::size_t>(kBandBytes / rowBytes, kLeastBandRows));
    for (int y = first; y <= last && !AbortRequested(); y += band)
        AccumulateBand(box_.Bottom + y, box_.Bottom + std::min(y + band - 1, last));
}

template <class Real>
void LightAccumulation<Real>::AccumulateBand(int first, int last) {
    const LightPlanes<Real> planes = Planes();
    std::fill(&planes.At(box_.Left, first), &planes.At(box_.Left, last) + box_.Width(), LightSum<Real>{});

    const HaloKernel<Real>& halo = tables_->Halo();
    const GlowKernel<Real>& glow = tables_->Glow();
    for (const Light& light : *lights_) {
        if (AbortRequested()) return;
        AddKernel(light, halo.Radius, halo.Entries.data(), planes, frame_.Right, first, last);
        streaks_.Add(light, planes, first, last);
        AddKernel(light, glow.Radius, glow.Weights.data(), planes, frame_.Right, first, last);
    }
}

template class LightAccumulation<double>;
template class LightAccumulation<float>;

} // namespace k7
