#pragma once

#include "host/Operator.h"

#include <string>
#include <vector>

namespace view {

/// What one input is set to, and how it is shown. Of an image input nothing is kept.
struct InputState {
    host::Curve curve;
    std::string text;
    bool shown = true;
    bool enabled = true;

    bool SameValue(const InputState& other) const { return curve == other.curve && text == other.text; }
    bool operator==(const InputState&) const = default;
};

/// The states of a tool's inputs in their order: equal for every instance of one class.
using Values = std::vector<InputState>;

Values ValuesOf(const host::Operator& op);

/// Sets the inputs that differ. The tool does not react, so that all end as they are told here.
void Restore(host::Operator& op, const Values& values);

/// The same values for pictures of a fraction of the size: lengths in pixels shrink with them.
Values Scaled(const host::Operator& op, Values values, int divisor);

/// Whether a number or point has its default value.
bool IsDefault(const host::Input& input);
host::Curve::Value DefaultOf(const host::Input& input);

} // namespace view
