#pragma once

#include <cstddef>

namespace ofx {

/// What the tool's page says of a control. The table is made from the pages by the build.
struct Hint {
    const char* effect;
    const char* label;
    const char* text;
};
extern const Hint kHints[];
extern const std::size_t kHintCount;

} // namespace ofx
