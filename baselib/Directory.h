#pragma once

#include <string>

namespace k7 {

/// The installation root: the environment variable K7_HOME_DIR as it stands, or the system's default root.
std::string DataRoot();

/// The folder of data files under the root, with a backslash at its end.
std::string DataFolder();

/// A path as this system opens it: backslashes become the system's separator.
std::string NativePath(std::string path);

} // namespace k7
