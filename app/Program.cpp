#include "app/Program.h"

#include "app/Commands.h"
#include "host/Application.h"
#include "media/Errors.h"
#include "media/PlugIns.h"
#include "media/Words.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <exception>
#include <iostream>
#include <stdexcept>
#include <system_error>

namespace app {

using namespace media;
namespace {

constexpr int kFailed = 1, kWrong = 2;

int Complain(const std::string& why, int code) {
    for (const std::string& line : Split(why, '\n')) std::fprintf(stderr, "k7: %s\n", OneLine(line).c_str());
    return code;
}

/// The words of the command line that are close to what was given.
std::vector<std::string> OptionsOf(const CLI::App& line) {
    std::vector<std::string> names;
    for (const CLI::Option* option : line.get_options())
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    return names;
}

/// What was wrong with the command, with the right word if one is close.
std::string Explain(const CLI::ParseError& error, const std::vector<std::unique_ptr<Command>>& commands) {
    for (const auto& command : commands) {
        if (!command->Line()->parsed()) continue;
        const std::vector<std::string> left = command->Line()->remaining();
        if (left.empty()) continue;
        if (!left.front().starts_with('-')) return "'" + left.front() + "' is an unexpected word";
        return "there is no option '" + left.front() + "'" +
               DidYouMean(left.front(), OptionsOf(*command->Line()));
    }
    return error.what();
}

void CheckFirstWord(const std::string& word, const std::vector<std::unique_ptr<Command>>& commands) {
    std::vector<std::string> names;
    for (const auto& command : commands) names.push_back(command->Line()->get_name());
    if (word.starts_with('-') || std::find(names.begin(), names.end(), word) != names.end()) return;
    throw UsageError("there is no command '" + word + "'" + DidYouMean(word, names));
}

/// Throws std::runtime_error if not everything that was printed could be written.
void CheckPrinted() {
    std::cout.flush();
    if (std::fflush(stdout) == 0 && !std::ferror(stdout) && std::cout) return;
    throw std::runtime_error("standard output cannot be written: " + std::generic_category().message(errno));
}

int RunCommand(int count, const char* const* given) {
    std::vector<std::string> words(given, given + count);
    std::vector<StageWords> later = TakeStages(words);

    CLI::App k7("Renders picture files with the effects of the K7 plug-in.", "k7");
    k7.require_subcommand(1);
    k7.set_version_flag("--version", "k7 " K7_VERSION);
    std::vector<std::unique_ptr<Command>> commands;
    for (const auto make : {MakeListCommand, MakeInfoCommand, MakeRenderCommand, MakePreviewCommand})
        commands.push_back(make(k7));

    try {
        if (words.size() > 1) CheckFirstWord(words[1], commands);
        std::reverse(words.begin(), words.end()); // as the parser expects them
        if (!words.empty()) words.pop_back();
        k7.parse(std::move(words));
    } catch (const CLI::Success& wish) {
        return k7.exit(wish);
    } catch (const CLI::ParseError& error) {
        throw UsageError(Explain(error, commands));
    }
    LoadPlugIns();
    host::GetApp()->Division = 1; // frames are the same on every machine
    for (const auto& command : commands)
        if (command->Line()->parsed()) {
            command->SetLaterStages(std::move(later));
            const int code = command->Run();
            if (code == 0 && command->PrintsResult()) CheckPrinted();
            return code;
        }
    return kWrong;
}

} // namespace

void Command::SetLaterStages(std::vector<StageWords> stages) {
    if (!stages.empty()) throw UsageError("--then is an option of render and preview only");
}

int RunProgram(int count, const char* const* words) {
    try {
        return RunCommand(count, words);
    } catch (const UsageError& error) {
        return Complain(error.what(), kWrong);
    } catch (const std::exception& error) {
        return Complain(error.what(), kFailed);
    }
}

} // namespace app
