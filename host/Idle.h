#pragma once

#include "host/Export.h"
#include "host/Operator.h"

namespace host {

/// Whether a frame at this time is the main image unchanged: all of the tool's own inputs that can make it
/// idle (kTagIdleAt) do so, or one of the common inputs does. The latter never stop a tool whose frames write
/// controls.
K7HOST_API bool IsIdle(const Operator& op, double time);

/// The control that makes frames at this time show an aid of the tool, such as its light map, in place of its
/// effect (kTagAidAt); null if none does.
K7HOST_API Input* AidShown(const Operator& op, double time);

} // namespace host
