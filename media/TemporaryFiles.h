#pragma once

#include <string>

namespace media {

// Files that are removed when the program ends, however it ends.

/// Creates an empty file beside `path`, under a hidden name that cannot be guessed and has the same
/// extension, and notes it. Nobody else may read it. If that fails, returns an empty name and sets errno.
[[nodiscard]] std::string MakeTemporaryFile(const std::string& path);

/// Forgets a file that was moved to its place or removed.
void ForgetTemporaryFile(const std::string& name);

/// Removes all noted files. Safe in a signal handler.
void RemoveTemporaryFiles();

} // namespace media
