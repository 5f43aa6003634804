#include "baselib/Directory.h"

#include "baselib/Platform.h"

#include <algorithm>

namespace k7 {

std::string DataRoot() {
    const char* root = EnvironmentValue("K7_HOME_DIR");
    return root ? root : kDefaultRoot;
}

std::string DataFolder() {
    return DataRoot() + "\\DF\\Data\\";
}

std::string NativePath(std::string path) {
    std::replace(path.begin(), path.end(), '\\', kPathSeparator);
    return path;
}

} // namespace k7
