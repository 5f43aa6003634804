#pragma once

#include "media/Stack.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace media {

/// The contents of a file that SaveSettingsFile wrote. Throws UsageError.
nlohmann::json ReadSettingsFile(const std::string& path);

/// Writes what SaveStack or SaveSettings returned. Throws std::runtime_error.
void WriteSettingsFile(const nlohmann::ordered_json& settings, const std::string& path);

/// The tools that a file's settings are of. Throws UsageError.
std::vector<host::Registry*> ToolsOfFile(const std::string& path);

/// Sets the controls of all tools from such a file. Throws UsageError.
void LoadSettingsFile(Stack& stack, const std::string& path);

/// Writes the tools and their controls with their keys. Throws std::runtime_error.
void SaveSettingsFile(const Stack& stack, const std::string& path);

} // namespace media
