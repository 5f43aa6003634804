#pragma once

#include "media/FilePattern.h"
#include "media/PictureFile.h"
#include "media/Stack.h"

#include <string>
#include <vector>

namespace app {

/// What is looked at before a render begins.
struct OutputCheck {
    const media::Stack& stack;
    std::string output; ///< as it was written
    const std::vector<int>& frames;
    media::WriteOptions options;
    bool makeFolder = true; ///< where it is missing
};

/// Makes the output's folder and looks whether the run can work: inputs that can be read, a format that holds
/// what is asked for, a folder that can be written, no frame that would replace an input. Throws
/// media::UsageError with a line for each fault, or std::runtime_error where nothing but files or folders is
/// missing.
void CheckBeforeWork(const OutputCheck& check);

} // namespace app
