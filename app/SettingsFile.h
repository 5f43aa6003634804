#pragma once

#include "host/Operator.h"

#include <string>

namespace app {

/// Takes a tool's controls from a file that SaveSettingsFile wrote. Throws media::UsageError.
void LoadSettingsFile(host::Operator& op, const std::string& path);

/// Writes a tool's controls with their keys. Throws std::runtime_error.
void SaveSettingsFile(const host::Operator& op, const std::string& path);

} // namespace app
