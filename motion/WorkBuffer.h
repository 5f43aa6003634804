#pragma once

#include "baselib/Buffer.h"
#include "frame/PluginK7.h"

#include <cstdio>
#include <type_traits>

namespace k7 {

/// Makes a work buffer of the motion tools. Without memory it says so with the buffer's number and returns
/// false.
template <class T>
bool MakeWorkBuffer(ImageBuffer<T>& buffer, std::size_t count, int number) {
    buffer = {};
    buffer = ImageBuffer<T>(count, "MoBlur", __LINE__);
    if (buffer) return true;
    char text[64];
    std::snprintf(text, sizeof text, "Failed to get memory for buffer %02d", number);
    ReportMessage(text);
    return false;
}

/// Runs work(first, last) over rows 0 to rows - 1 on all threads of a core.
template <class Work>
void RunRows(PluginK7& core, int rows, Work&& work) {
    const auto call = [](void* context, int first, int last, int) {
        (*static_cast<std::remove_reference_t<Work>*>(context))(first, last);
    };
    core.RunExternalChunks(call, rows, &work);
}

} // namespace k7
