#pragma once

#include <string>

namespace media {

// The files that are gone when the program is, however it ends.

/// Creates an empty file beside `path`, under a hidden name that cannot be guessed and has the same ending,
/// and notes it. Nobody else may read it. An empty name with errno set where that fails.
[[nodiscard]] std::string MakeTemporaryFile(const std::string& path);

/// Forgets a file: it was moved to its place or removed.
void ForgetTemporaryFile(const std::string& name);

/// Removes all that are noted. Safe in a signal handler.
void RemoveTemporaryFiles();

} // namespace media
