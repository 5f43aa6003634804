#pragma once

#include "app/Stages.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace app {

/// A word after `k7` with its options. It enters itself into the command line when it is made.
class Command {
public:
    virtual ~Command() = default;
    /// Runs when the word was given and its options are filled in. The program's exit code.
    virtual int Run() = 0;
    /// Takes what the command line says of further tools. Throws media::UsageError where it has none.
    virtual void SetLaterStages(std::vector<StageWords> stages);
    /// Whether what it prints is what it was run for: without that it has failed.
    virtual bool PrintsResult() const { return true; }
    CLI::App* Line() const { return line_; }

protected:
    explicit Command(CLI::App* line) : line_(line) {}

    /// TOOL, which must be given.
    void AddToolName(std::string& name) {
        line_->add_option("TOOL", name, "Class id (K7.Clean), name (K7Clean) or plain name (Clean)")
            ->required();
    }
    /// An option that may be given any number of times, each time with one value.
    CLI::Option* AddEach(const char* names, std::vector<std::string>& values, const char* text) {
        return line_->add_option(names, values, text)
            ->allow_extra_args(false)
            ->expected(1)
            ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    }

private:
    CLI::App* const line_;
};

std::unique_ptr<Command> MakeListCommand(CLI::App& k7);
std::unique_ptr<Command> MakeInfoCommand(CLI::App& k7);
std::unique_ptr<Command> MakeRenderCommand(CLI::App& k7);
std::unique_ptr<Command> MakePreviewCommand(CLI::App& k7);

} // namespace app
