#pragma once

#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace k7 {

/// Steps along an anti-aliased line from (0, 0) to (dx, dy), both at most 2^32 in size. Each step has a main
/// pixel and, one pixel beside it along the minor axis, a side pixel; the coverage splits the step between
/// them.
template <class Real>
class LineStepper {
public:
    /// A line of zero length has no coverage: its steps must not be used.
    LineStepper(std::int64_t dx, std::int64_t dy)
        : StepX(dx < 0 ? -1 : 1)
        , StepY(dy < 0 ? -1 : 1)
        , Steep(std::abs(dy) > std::abs(dx))
        , Major(Steep ? std::abs(dy) : std::abs(dx))
        , minor_(Steep ? std::abs(dx) : std::abs(dy))
        , error_(-Major) {
        const double square = static_cast<double>(dx) * static_cast<double>(dx) +
                              static_cast<double>(dy) * static_cast<double>(dy);
        norm_ = Real(1) / static_cast<Real>(2.0f * std::sqrt(static_cast<float>(square)));
    }

    /// Share of the step that goes to the side pixel; the sign says on which side that lies.
    Real Coverage() const { return static_cast<Real>(offset_) * norm_; }

    /// The side pixel, from the main pixel: one along the minor axis on the positive side of the line, or one
    /// back.
    int SideX(Real coverage) const { return Steep ? (coverage >= 0 ? StepX : -StepX) : 0; }
    int SideY(Real coverage) const { return Steep ? 0 : (coverage >= 0 ? StepY : -StepY); }

    void Next() {
        error_ += 2 * minor_;
        offset_ += 2 * minor_;
        if (error_ > 0) {
            (Steep ? X : Y) += Steep ? StepX : StepY;
            error_ -= 2 * Major;
            offset_ -= 2 * Major;
        }
        (Steep ? Y : X) += Steep ? StepY : StepX;
        ++Step;
    }

    const int StepX; ///< direction along each axis, 1 or -1
    const int StepY;
    const bool Steep;         ///< the major axis is y
    const std::int64_t Major; ///< number of the last step
    std::int64_t Step = 0;
    std::int64_t X = 0; ///< main pixel
    std::int64_t Y = 0;

private:
    std::int64_t minor_;
    std::int64_t error_;
    std::int64_t offset_ = 0;
    Real norm_;
};

} // namespace k7
