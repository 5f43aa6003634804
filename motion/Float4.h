#pragma once

#include "library/Numbers.h"

#include <cstring>

namespace k7 {

/// The four channels of a pixel at once. Each operation works channel by channel, so that results are those
/// of four separate floats.
using Float4 = float __attribute__((vector_size(16)));
using Int4 = int __attribute__((vector_size(16)));

/// From and to memory of any alignment.
inline Float4 LoadFloat4(const float* from) {
    Float4 value;
    std::memcpy(&value, from, sizeof value);
    return value;
}
inline void StoreFloat4(float* to, Float4 value) {
    std::memcpy(to, &value, sizeof value);
}

/// A pixel's samples as floats.
inline Float4 LoadPixel(const u16* pixel) {
    return __builtin_convertvector((Int4{pixel[0], pixel[1], pixel[2], pixel[3]}), Float4);
}
inline Float4 LoadPixel(const float* pixel) {
    return LoadFloat4(pixel);
}

} // namespace k7
