#pragma once

#include "view/Values.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace view {

/// One tool of the stack.
struct Layer {
    std::shared_ptr<host::Operator> op; ///< never null
    bool on = true;
    std::map<std::string, std::string> files; ///< at the image inputs beside the main one, by their ids

    bool operator==(const Layer&) const = default;
};

/// A tool, and what its controls were at some moment.
struct LayerState {
    Layer layer;
    Values values;

    bool operator==(const LayerState&) const = default;
};

using StackState = std::vector<LayerState>;

StackState StateOf(const std::vector<Layer>& layers);

/// Makes the stack what it was. Tools do not react.
void Restore(std::vector<Layer>& layers, const StackState& state);

} // namespace view
