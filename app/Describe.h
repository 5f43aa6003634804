#pragma once

#include "host/Operator.h"
#include "host/Registry.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace app {

/// What a tool's registration says about it.
nlohmann::ordered_json DescribeTool(const host::Registry& tool);

/// The same with the tool's pages, image inputs and controls, in the state of a new one.
nlohmann::ordered_json DescribeInputs(const host::Operator& op);

/// A value as it is printed in a table: 5, not 5.0; 0.2,0.3 for a point; keys as JSON.
std::string Plain(const nlohmann::ordered_json& value);

} // namespace app
