#pragma once

#include "host/Operator.h"
#include "ofx/Abi.h"

namespace ofx {

/// Whether a tool has on-screen controls.
bool HasWidgets(host::Operator& op);

/// The entry point of all plug-ins' on-screen controls.
extern "C" Status OverlayEntry(const char* action, const void* handle, PropertySet inArgs,
                               PropertySet outArgs);

} // namespace ofx
