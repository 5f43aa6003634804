#pragma once

#include "host/Registry.h"
#include "ofx/Abi.h"

namespace ofx {

/// What the describe actions say about a tool. They throw Failure.
void Describe(const host::Registry& tool, Effect effect);
void DescribeInContext(const host::Registry& tool, Effect effect);

/// "Clean" for the class "K7.Clean".
std::string PlainName(const host::Registry& tool);

} // namespace ofx
