#include "baselib/Directory.h"

#include "baselib/Platform.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace k7::test {
namespace {

#ifndef _WIN32
TEST(Directory, RootComesFromTheEnvironment) {
    setenv("K7_HOME_DIR", "D:\\Tools", 1);
    EXPECT_EQ(DataRoot(), "D:\\Tools");
    EXPECT_EQ(DataFolder(), "D:\\Tools\\DF\\Data\\");
    setenv("K7_HOME_DIR", "", 1);
    EXPECT_EQ(DataFolder(), "\\DF\\Data\\");
    unsetenv("K7_HOME_DIR");
    EXPECT_EQ(DataRoot(), kDefaultRoot);
    EXPECT_EQ(DataFolder(), std::string(kDefaultRoot) + "\\DF\\Data\\");
}

TEST(Directory, PathsOpenWithTheSystemsSeparator) {
    EXPECT_EQ(NativePath("/opt/tools\\DF\\Data\\my_lens.txt"), "/opt/tools/DF/Data/my_lens.txt");
    EXPECT_EQ(NativePath(""), "");
}
#endif

} // namespace
} // namespace k7::test
