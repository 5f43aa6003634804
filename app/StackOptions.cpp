#include "app/StackOptions.h"

#include "app/Listener.h"
#include "media/Errors.h"
#include "media/PlugIns.h"
#include "media/SettingsFile.h"

#include <nlohmann/json.hpp>

namespace app {

using namespace media;

void StackOptions::AddTo(CLI::App& line) {
    const auto each = [&](const char* names, std::vector<std::string>& values, const char* text) {
        return line.add_option(names, values, text)
            ->allow_extra_args(false)
            ->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    };
    line.add_option("TOOL", toolName_, "Class id (K7.Clean), name (K7Clean) or plain name (Clean)");
    each("-i,--input", links_, "[INPUT=]FILE: a picture, sequence or `sample:` for an input")->required();
    each("-s,--set", settings_, "CONTROL=VALUE, in the order given");
    each("--then", then_,
         "TOOL to run on the previous one's frames, with the -s and -i INPUT=FILE that follow");
    line.add_option("--settings", loadFile_,
                    "Load tools and controls from a file of --save-settings; TOOL may be omitted");
    line.add_option("--save-settings", saveFile_, "Write all controls with their keys to a file at the end");
}

std::unique_ptr<Stack> StackOptions::Make(Missing missing, const std::string& aspect,
                                          const ReadOptions& reading) {
    std::vector<host::Registry*> tools;
    if (!toolName_.empty()) tools.push_back(&FindTool(toolName_));
    for (const StageWords& stage : later_) tools.push_back(&FindTool(stage.tool));
    if (toolName_.empty()) {
        if (!later_.empty() || loadFile_.empty()) throw UsageError("TOOL is required: name one of `k7 list`");
        tools = ToolsOfFile(loadFile_);
    }
    auto stack = std::make_unique<Stack>(tools);
    std::vector<Links> links = {links_};
    for (const StageWords& stage : later_) links.push_back(stage.links);
    stack->LinkAll(links, missing, aspect, reading);
    return stack;
}

void StackOptions::Apply(Stack& stack, WorkingDepth depth, int frame, Console& console) const {
    if (!loadFile_.empty()) LoadSettingsFile(stack, loadFile_);
    stack.ChooseDepth(depth, frame);
    const auto apply = [&](std::size_t i, const std::vector<std::string>& settings) {
        ApplySettings(stack.Op(i), settings, console, stack.Size() > 1);
    };
    apply(0, settings_);
    for (std::size_t i = 0; i < later_.size(); ++i) apply(i + 1, later_[i].settings);
}

void StackOptions::Save(const Stack& stack) const {
    if (!saveFile_.empty()) SaveSettingsFile(stack, saveFile_);
}

} // namespace app
