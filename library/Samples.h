#pragma once

#include "library/Numbers.h"

namespace k7 {

// A frame is worked on in one of two depths: in words, from 0 to 32767, or in 32-bit floats on the same
// scale, where 32767.0 is white and values beyond black and white stay what they are.

template <class Sample>
class PictureK7;

using K7Image = PictureK7<u16>;
using FloatImageK7 = PictureK7<float>;

/// What differs between the depths: how the result of a sum becomes a sample. NaN becomes a word of 0.
template <class Sample>
struct SampleTraits;

template <>
struct SampleTraits<u16> {
    static constexpr bool kWords = true;
    /// Toward zero, clamped. Without branches, for vector registers.
    static constexpr u16 Truncated(double value) {
        const double light = value > 0.0 ? value : 0.0;
        return static_cast<u16>(static_cast<int>(light < kFullScale ? light : kFullScale));
    }
    /// Halves up, clamped.
    static constexpr u16 Rounded(double value) { return Truncated(value + 0.5); }
};

template <>
struct SampleTraits<float> {
    static constexpr bool kWords = false;
    static constexpr float Truncated(double value) { return static_cast<float>(value); }
    static constexpr float Rounded(double value) { return static_cast<float>(value); }
};

} // namespace k7
