#include "media/PlugIns.h"

#include "host/Tags.h"
#include "media/Errors.h"
#include "media/Words.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>

#include <dlfcn.h>

namespace media {

void LoadPlugIns() {
    namespace fs = std::filesystem;
    // The folder has the same place relative to the program in a build and where k7 is installed.
    const fs::path folder =
        (fs::read_symlink("/proc/self/exe").parent_path() / K7_PLUGIN_FOLDER).lexically_normal();
    std::error_code error;
    std::vector<fs::path> files;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
        if (entry->path().extension() == ".so") files.push_back(entry->path());
    std::sort(files.begin(), files.end());
    if (files.empty()) throw std::runtime_error("there is no plug-in in " + folder.string());
    for (const fs::path& file : files)
        if (!::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL))
            throw std::runtime_error("the plug-in cannot be loaded: " + OneLine(::dlerror()));
}

std::vector<host::Registry*> Tools() {
    std::vector<host::Registry*> tools = host::ClassRegistry().Entries();
    std::erase_if(tools, [](const host::Registry* entry) { return !entry->HasAttr(host::kTagRegNumber); });
    return tools;
}

std::string PlainName(const host::Registry& tool) {
    const std::string id = tool.Id().Text();
    return id.substr(id.find('.') + 1);
}

host::Registry& FindTool(const std::string& name) {
    std::vector<std::string> names;
    for (host::Registry* tool : Tools()) {
        const std::string all[] = {PlainName(*tool), tool->GetAttrS(host::kTagRegName), tool->Id().Text()};
        if (std::any_of(std::begin(all), std::end(all),
                        [&](const auto& known) { return SameWord(known, name); }))
            return *tool;
        names.insert(names.end(), std::begin(all), std::end(all));
    }
    throw UsageError("there is no tool '" + name + "'" + DidYouMean(name, names));
}

} // namespace media
