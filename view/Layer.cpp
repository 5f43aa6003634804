#include "view/Layer.h"

namespace view {

StackState StateOf(const std::vector<Layer>& layers) {
    StackState state;
    for (const Layer& layer : layers) state.push_back({layer, ValuesOf(*layer.op)});
    return state;
}

void Restore(std::vector<Layer>& layers, const StackState& state) {
    layers.clear();
    for (const LayerState& one : state) {
        layers.push_back(one.layer);
        Restore(*one.layer.op, one.values);
    }
}

} // namespace view
