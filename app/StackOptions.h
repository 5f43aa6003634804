#pragma once

#include "app/Console.h"
#include "app/PictureOptions.h"
#include "app/Stages.h"
#include "media/Stack.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace app {

/// The options of a command that say which tools work on which pictures, and with what settings.
class StackOptions {
public:
    void AddTo(CLI::App& line);
    /// The tools after the first, as TakeStages returned them.
    void SetLater(std::vector<StageWords> stages) { later_ = std::move(stages); }

    // All throw media::UsageError.

    /// The tools, of the command line or of the settings file, linked to their pictures.
    std::unique_ptr<media::Stack> Make(media::Missing missing, const std::string& aspect,
                                       const media::ReadOptions& reading);
    /// The settings of the file, then the depth, then those of the command line. Warns of those that do not
    /// take effect as written.
    void Apply(media::Stack& stack, media::WorkingDepth depth, int frame, Console& console) const;
    /// Writes the settings file, if one was asked for. Throws std::runtime_error.
    void Save(const media::Stack& stack) const;

    /// The main picture as it was named.
    const std::string& MainLink() const { return links_.front(); }

private:
    std::string toolName_, loadFile_, saveFile_;
    std::vector<std::string> links_, settings_, then_;
    std::vector<StageWords> later_;
};

} // namespace app
