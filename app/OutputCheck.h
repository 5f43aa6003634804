#pragma once

#include "media/FilePattern.h"
#include "media/PictureFile.h"
#include "media/Stack.h"

#include <string>
#include <vector>

namespace app {

/// What is checked before a render begins.
struct OutputCheck {
    const media::Stack& stack;
    std::string output; ///< as given
    const std::vector<int>& frames;
    media::WriteOptions options;
    bool makeFolder = true; ///< if it is missing
};

/// Creates the output's folder and checks that the run can work: inputs that can be read, a format that holds
/// what is asked for, a writable folder, no frame that would replace an input. Throws media::UsageError with
/// a line for each fault, or std::runtime_error if only files or folders are missing.
void CheckBeforeWork(const OutputCheck& check);

} // namespace app
