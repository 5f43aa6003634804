#pragma once

#include "host/Operator.h"

#include <string>
#include <vector>

namespace ofx {

/// One parameter of a plug-in, with the inputs of the tool whose value it is.
struct ParameterPlan {
    enum class Kind { Integer, Double, Point, Boolean, Choice, Rgb, File };

    Kind kind;
    std::string name;  ///< letters and digits, unique within the tool
    std::string label; ///< for the user
    std::vector<host::Input*>
        inputs;    ///< red, green and blue of a colour, otherwise one; none for the depth switch
    int page = -1; ///< index among the tool's pages
};

/// One image input of a plug-in.
struct ClipPlan {
    std::string name;
    host::Input* input;
    bool optional;
    bool mask; ///< limits where a tool acts
};

/// A tool as the standard sees it: what its inputs become. The inputs belong to the operator.
struct ToolPlan {
    explicit ToolPlan(const host::Operator& op);

    std::vector<ParameterPlan> parameters;
    std::vector<ClipPlan> clips;        ///< the first is the main one
    host::Input* depthSwitch = nullptr; ///< floats instead of words; null if the tool has only words
    int framesBefore = 0;               ///< earlier frames that a render reads
    bool varies = false;                ///< the result differs from frame to frame for the same picture
};

/// The parameter that turns floats off.
inline constexpr char kWordsParameter[] = "Words15";
inline constexpr char kWordsLabel[] = "15-Bit Words";

} // namespace ofx
