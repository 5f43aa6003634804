#pragma once

#include "media/Stack.h"

#include <string>
#include <vector>

namespace app {

/// What a command line says of one tool of a stack.
struct StageWords {
    std::string tool;
    media::Links links;
    std::vector<std::string> settings;
};

/// Takes `--then TOOL`, and the settings and named inputs behind it, out of a command line: an element for
/// each. Throws media::UsageError.
std::vector<StageWords> TakeStages(std::vector<std::string>& words);

} // namespace app
