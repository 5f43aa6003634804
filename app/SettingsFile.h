#pragma once

#include "media/Stack.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace app {

/// What a file holds that SaveSettingsFile wrote. Throws media::UsageError.
nlohmann::json ReadSettingsFile(const std::string& path);

/// Takes the controls of all tools from such a file. Throws media::UsageError.
void LoadSettingsFile(media::Stack& stack, const std::string& path);

/// Writes the tools and their controls with their keys. Throws std::runtime_error.
void SaveSettingsFile(const media::Stack& stack, const std::string& path);

} // namespace app
