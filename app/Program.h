#pragma once

namespace app {

/// All of k7: parses the words of the command line, the program's name first, and carries them out. Returns
/// the exit code: 0 for success, 1 if a frame failed, 2 if the command was wrong, 128 plus the signal's
/// number if stopped.
int RunProgram(int count, const char* const* words);

} // namespace app
