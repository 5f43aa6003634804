#include "media/SettingsFile.h"

#include "media/Errors.h"
#include "media/WholeFile.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace media {

nlohmann::json ReadSettingsFile(const std::string& path) {
    std::error_code ignored;
    if (std::filesystem::is_directory(path, ignored)) throw UsageError("'" + path + "': is a folder");
    std::ifstream file(path);
    if (!file) throw UsageError("'" + path + "': the settings cannot be read");
    nlohmann::json json = nlohmann::json::parse(file, nullptr, false);
    if (json.is_discarded()) throw UsageError("'" + path + "': is not JSON");
    return json;
}

namespace {

/// Runs an action on the settings of a file; its errors name the file.
template <class Action>
auto WithFile(const std::string& path, Action action) {
    const nlohmann::json settings = ReadSettingsFile(path);
    try {
        return action(settings);
    } catch (const UsageError& error) {
        throw UsageError("'" + path + "': " + error.what());
    }
}

} // namespace

std::vector<host::Registry*> ToolsOfFile(const std::string& path) {
    return WithFile(path, [](const nlohmann::json& settings) { return ToolsOf(settings); });
}

void LoadSettingsFile(Stack& stack, const std::string& path) {
    WithFile(path, [&](const nlohmann::json& settings) { RestoreStack(stack, settings); });
}

void SaveSettingsFile(const Stack& stack, const std::string& path) {
    WriteSettingsFile(SaveStack(stack), path);
}

void WriteSettingsFile(const nlohmann::ordered_json& settings, const std::string& path) {
    const std::string text = settings.dump(2) + "\n";
    try {
        WholeFile(path).Finish({text.begin(), text.end()});
    } catch (const FrameError& error) {
        throw std::runtime_error(path + ": " + error.what());
    }
}

} // namespace media
