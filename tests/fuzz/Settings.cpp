#include "host/Registry.h"
#include "media/Errors.h"
#include "media/PlugIns.h"
#include "media/SettingsFile.h"
#include "tests/fuzz/Fuzz.h"

#include <nlohmann/json.hpp>

#include <fstream>
#include <vector>

namespace fuzz {

using namespace media;
namespace {

std::string TextOf(const Stack& stack) {
    return SaveStack(stack).dump(1);
}

/// Damaged settings are refused, or become values that survive saving and loading.
void LoadOne(const std::string& path, Chance& chance) {
    using namespace std::string_view_literals;
    const std::vector<host::Registry*> tools = Tools();
    const auto any = [&] {
        return tools[static_cast<std::size_t>(chance.Below(static_cast<int>(tools.size())))];
    };
    std::vector<host::Registry*> chosen = {any()};
    if (chance.Below(2)) chosen.push_back(any());
    Stack stack(chosen);
    {
        std::ofstream file(path, std::ios::binary);
        file << chance.Damaged(TextOf(stack), "\"{}[],:0123456789-+.eEnaif\\ \n\xff"sv);
    }
    try {
        LoadSettingsFile(stack, path);
    } catch (const UsageError&) {
        return;
    }
    const std::string taken = TextOf(stack);
    SaveSettingsFile(stack, path);
    LoadSettingsFile(stack, path);
    Require(TextOf(stack) == taken, "settings change from one load to the next:\n" + taken);
}

} // namespace

Round Settings(const std::string& folder) {
    return [path = folder + "/settings.json"](Chance& chance) { LoadOne(path, chance); };
}

} // namespace fuzz
