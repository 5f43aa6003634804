#include "library/FourierTransform.h"

#include "baselib/Vector.h"
#include "library/Chunks.h"

#include <algorithm>
#include <complex>
#include <numbers>

namespace k7 {

namespace {

constexpr const char* kSource = "library/K7Image";

/// The turns of the longest half: two short tables are multiplied, so that no error adds up along the way.
void FillTurns(double* cosines, double* sines, std::size_t half) {
    constexpr std::size_t step = 1024;
    std::complex<double> fine[step];
    const double angle = std::numbers::pi / static_cast<double>(half);
    for (std::size_t i = 0; i < step; ++i) fine[i] = std::polar(1.0, angle * static_cast<double>(i));
    for (std::size_t first = 0; first < half; first += step) {
        const std::complex<double> coarse = std::polar(1.0, angle * static_cast<double>(first));
        for (std::size_t i = first; i < std::min(half, first + step); ++i) {
            const std::complex<double> turn = coarse * fine[i - first];
            cosines[i] = turn.real();
            sines[i] = turn.imag();
        }
    }
}

/// Where a length is split in halves: sums into the first, differences, turned, into the second.
K7_WIDE_VECTORS void Split(double* real, double* imaginary, const double* cosines, const double* sines,
                           std::size_t half) {
    double* real2 = real + half;
    double* imaginary2 = imaginary + half;
#pragma GCC ivdep
    for (std::size_t i = 0; i < half; ++i) {
        const double x = real[i] - real2[i];
        const double y = imaginary[i] - imaginary2[i];
        real[i] += real2[i];
        imaginary[i] += imaginary2[i];
        real2[i] = x * cosines[i] - y * sines[i];
        imaginary2[i] = x * sines[i] + y * cosines[i];
    }
}

/// The reverse: the second half is turned back first.
K7_WIDE_VECTORS void Join(double* real, double* imaginary, const double* cosines, const double* sines,
                          std::size_t half) {
    double* real2 = real + half;
    double* imaginary2 = imaginary + half;
#pragma GCC ivdep
    for (std::size_t i = 0; i < half; ++i) {
        const double x = real2[i] * cosines[i] + imaginary2[i] * sines[i];
        const double y = imaginary2[i] * cosines[i] - real2[i] * sines[i];
        real2[i] = real[i] - x;
        imaginary2[i] = imaginary[i] - y;
        real[i] += x;
        imaginary[i] += y;
    }
}

/// Whether the frame is aborted; short transforms are over before it is worth asking.
bool IsStopped(std::size_t length) {
    constexpr std::size_t kWorthAsking = std::size_t{1} << 12;
    return length >= kWorthAsking && AbortRequested();
}

} // namespace

FourierTransform::FourierTransform(std::size_t length)
    : length_(length)
    , cosines_(length, kSource)
    , sines_(length, kSource) {
    if (!cosines_ || !sines_) {
        cosines_ = {};
        return;
    }
    cosines_[0] = sines_[0] = 0.0; // of no half
    std::size_t half = length / 2;
    if (half > 0) FillTurns(cosines_.data() + half, sines_.data() + half, half);
    for (; half > 1; half /= 2)
        for (std::size_t i = 0; i < half / 2; ++i) {
            cosines_[half / 2 + i] = cosines_[half + 2 * i];
            sines_[half / 2 + i] = sines_[half + 2 * i];
        }
}

// Both halve the length in turn (Gentleman and Sande, Cooley and Tukey), each half to its end, so that all
// but the longest lengths are worked on in the cache.

void FourierTransform::ForwardPart(double* real, double* imaginary, std::size_t length) const {
    if (length < 2 || IsStopped(length)) return;
    const std::size_t half = length / 2;
    Split(real, imaginary, cosines_.data() + half, sines_.data() + half, half);
    ForwardPart(real, imaginary, half);
    ForwardPart(real + half, imaginary + half, half);
}

void FourierTransform::BackwardPart(double* real, double* imaginary, std::size_t length) const {
    if (length < 2 || IsStopped(length)) return;
    const std::size_t half = length / 2;
    BackwardPart(real, imaginary, half);
    BackwardPart(real + half, imaginary + half, half);
    Join(real, imaginary, cosines_.data() + half, sines_.data() + half, half);
}

void FourierTransform::Forward(double* real, double* imaginary) const {
    ForwardPart(real, imaginary, length_);
}

void FourierTransform::Backward(double* real, double* imaginary) const {
    BackwardPart(real, imaginary, length_);
}

} // namespace k7
