#pragma once

#include "ofx/Abi.h"

namespace ofx {

/// Records the host that all plug-ins of the bundle run in.
void SetHost(Host* host);

/// The load and unload actions of a plug-in: the first load fetches the host's suites, and work runs on the
/// host's threads from then on.
Status Load();
Status Unload();

} // namespace ofx
