#pragma once

namespace app {

/// All of k7: reads the words of the command line, the program's name first, and carries them out. Gives the
/// exit code: 0 all went well, 1 a frame failed, 2 the command was wrong, 128 and the signal's number when
/// stopped.
int RunProgram(int count, const char* const* words);

} // namespace app
