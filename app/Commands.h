#pragma once

#include "app/Stages.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace app {

/// A subcommand of `k7` with its options. It adds itself to the command line when it is constructed.
class Command {
public:
    virtual ~Command() = default;
    /// Runs the command once its options are filled in. Returns the program's exit code.
    virtual int Run() = 0;
    /// Takes the further tools of the command line. Throws media::UsageError if the command has none.
    virtual void SetLaterStages(std::vector<StageWords> stages);
    /// Whether its output is its result, so that it has failed if the output cannot be written.
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
