#pragma once

#include "baselib/Buffer.h"

#include <cstdint>

namespace k7 {

inline constexpr const char* kNoKernelMessage = "Cannot allocate memory for gaussian kernel :-( \n";

/// Weights of a Gaussian along a line, symmetric about their middle, in 16.16 fixed point.
struct GaussianKernel1D {
    static constexpr int Shift = 16;
    static constexpr int Sum = 1 << Shift; ///< what the weights add up to

    Buffer<std::uint32_t> Weights; ///< null: allocation failed
    int Taps = 0;                  ///< how many weights there are; odd
};

/// Reaches three sigma at `radius` pixels. Weights that come to nothing at the ends are left out. A radius
/// that is NaN counts as 0.
[[nodiscard]] GaussianKernel1D MakeGaussianKernel1D(float radius);

/// A round bell of whole weights from 0 to 64, as a square table whose summit lies one place behind its
/// middle on both axes.
struct GaussianKernel2D {
    int Size = 0;         ///< 2n - 1, with n the radius in whole pixels, at least 2
    std::int64_t Sum = 0; ///< of all weights

    /// Weight at a row and a column of the table, counted from its middle.
    int Weight(int row, int column) const;
};

/// `radius` is in pixels and at most a few million.
[[nodiscard]] GaussianKernel2D MakeGaussianKernel2D(float radius);

} // namespace k7
