#pragma once

#include "host/Registry.h"

#include <string>
#include <vector>

namespace media {

/// Loads every plug-in from the folder that belongs to this program; their tools are then in the host's class
/// registry. They stay until the program ends. Throws std::runtime_error.
void LoadPlugIns();

/// All tools, in the order of their numbers.
std::vector<host::Registry*> Tools();

/// "Clean" of "K7.Clean".
std::string PlainName(const host::Registry& tool);

/// A tool by its class id, its name or its plain name. Throws UsageError with the nearest name.
host::Registry& FindTool(const std::string& name);

} // namespace media
