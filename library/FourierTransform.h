#pragma once

#include "baselib/Buffer.h"

#include <cstddef>

namespace k7 {

/// The Fourier transform of complex doubles, for one length. Real and imaginary parts are arrays of their
/// own. The error of a value is some 1e-15 of the largest.
class FourierTransform {
public:
    /// `length` is a power of two; 0, and a failed allocation, make a transform that must not be used.
    explicit FourierTransform(std::size_t length);
    explicit operator bool() const { return static_cast<bool>(cosines_); }

    /// In place, into an order of its own.
    void Forward(double* real, double* imaginary) const;

    /// Its reverse, from that order, times the length.
    void Backward(double* real, double* imaginary) const;

private:
    void ForwardPart(double* real, double* imaginary, std::size_t length) const;
    void BackwardPart(double* real, double* imaginary, std::size_t length) const;

    std::size_t length_;
    Buffer<double> cosines_; ///< of i / (2 half) turns at half + i, for each half of a length
    Buffer<double> sines_;
};

} // namespace k7
