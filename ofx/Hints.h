#pragma once

#include <cstddef>

namespace ofx {

/// What the tool's page says about a control. The build makes the table from the pages.
struct Hint {
    const char* effect;
    const char* label;
    const char* text;
};
extern const Hint kHints[];
extern const std::size_t kHintCount;

} // namespace ofx
