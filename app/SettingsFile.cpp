#include "app/SettingsFile.h"

#include "media/Errors.h"
#include "media/Settings.h"
#include "media/WholeFile.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace app {

using namespace media;

void LoadSettingsFile(host::Operator& op, const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) throw UsageError("'" + path + "': is a folder");
    std::ifstream file(path);
    if (!file) throw UsageError("'" + path + "': the settings cannot be read");
    const nlohmann::json json = nlohmann::json::parse(file, nullptr, false);
    if (json.is_discarded()) throw UsageError("'" + path + "': is no JSON");
    try {
        RestoreSettings(op, json);
    } catch (const UsageError& error) {
        throw UsageError("'" + path + "': " + error.what());
    }
}

void SaveSettingsFile(const host::Operator& op, const std::string& path) {
    const std::string text = SaveSettings(op).dump(2) + "\n";
    try {
        WholeFile(path).Finish({text.begin(), text.end()});
    } catch (const FrameError& error) {
        throw std::runtime_error(path + ": " + error.what());
    }
}

} // namespace app
