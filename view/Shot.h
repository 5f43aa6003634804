#pragma once

#include "host/Image.h"
#include "view/Values.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace view {

class Pipeline;

/// What is to be rendered.
struct Order {
    int frame = 0;
    unsigned version = 0; ///< of the look; rises with each change
    int divisor = 1;      ///< of the sides; above 1 for a quick picture during a drag
    bool patient = false; ///< a newer order waits for this one: a drag wants to see pictures on its way
    std::shared_ptr<Pipeline> pipeline;
    std::vector<Values> values; ///< of each of its tools
};

/// A frame that has been rendered.
struct Shot {
    int frame = 0;
    unsigned version = 0;
    int divisor = 1;
    bool exact = false; ///< as k7 renders it: in full size, and drawn at random with the same numbers
    std::shared_ptr<const host::Image> after;
    std::shared_ptr<const host::Image> before; ///< of the clip, in full size
    double milliseconds = 0.0;
    std::string problem;                        ///< why there is no picture; empty if there is one
    std::optional<std::vector<Values>> written; ///< all values, where the frame has written some itself
};

using ShotPtr = std::shared_ptr<const Shot>;

} // namespace view
