#pragma once

#include "baselib/Buffer.h"
#include "library/Chunks.h"

#include <cstdio>

namespace k7 {

/// Allocates a work buffer of the motion tools. If that fails it reports the buffer's number and returns
/// false.
template <class T>
bool MakeWorkBuffer(ImageBuffer<T>& buffer, std::size_t count, int number) {
    buffer = {};
    buffer = ImageBuffer<T>(count, "MoBlur");
    if (buffer) return true;
    char text[64];
    std::snprintf(text, sizeof text, "Failed to get memory for buffer %02d", number);
    ReportMessage(text);
    return false;
}

} // namespace k7
