#pragma once

#include "ofx/Abi.h"

namespace ofx {

/// The host that all plug-ins of the bundle run in. It only takes note.
void SetHost(Host* host);

/// The load and unload actions of a plug-in: the first one fetches the host's suites, and has work spread
/// over the host's threads from then on.
Status Load();
Status Unload();

} // namespace ofx
