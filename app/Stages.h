#pragma once

#include "media/Stack.h"

#include <string>
#include <vector>

namespace app {

/// What a command line says about one tool of a stack.
struct StageWords {
    std::string tool;
    media::Links links;
    std::vector<std::string> settings;
};

/// Takes each `--then TOOL`, with the settings and named inputs after it, out of a command line. Throws
/// media::UsageError.
std::vector<StageWords> TakeStages(std::vector<std::string>& words);

} // namespace app
