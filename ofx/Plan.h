#pragma once

#include "host/Operator.h"

#include <string>
#include <vector>

namespace ofx {

/// One parameter of a plug-in, with the inputs of the tool that it is the value of.
struct ParameterPlan {
    enum class Kind { Integer, Double, Point, Boolean, Choice, Rgb, File };

    Kind kind;
    std::string name;                 ///< letters and digits, unique within the tool
    std::string label;                ///< for the user
    std::vector<host::Input*> inputs; ///< red, green and blue of a colour, else one; of the depth switch none
    int page = -1;                    ///< index among the tool's pages
};

/// One picture that a plug-in takes.
struct ClipPlan {
    std::string name;
    host::Input* input;
    bool optional;
    bool mask; ///< says where a tool acts
};

/// A tool as the standard sees it: what its inputs become. The inputs belong to the operator.
struct ToolPlan {
    explicit ToolPlan(const host::Operator& op);

    std::vector<ParameterPlan> parameters;
    std::vector<ClipPlan> clips;        ///< the first is the main one
    host::Input* depthSwitch = nullptr; ///< floats instead of words; null where the tool has words only
    int framesBefore = 0;               ///< earlier frames that a render reads
    bool varies = false;                ///< another result at each frame from the same picture
};

/// The parameter that turns floats off.
inline constexpr char kWordsParameter[] = "Words15";
inline constexpr char kWordsLabel[] = "15-Bit Words";

} // namespace ofx
