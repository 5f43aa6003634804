#include "tests/app/ProgramStage.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

// The built program, in a process of its own.

namespace app::test {
namespace {

/// Starts the built program, in the current folder and with its output discarded.
pid_t Start(Arguments arguments) {
    arguments.insert(arguments.begin(), K7_PROGRAM);
    arguments.push_back(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        const int nowhere = ::open("/dev/null", O_RDWR);
        ::dup2(nowhere, STDOUT_FILENO);
        ::dup2(nowhere, STDERR_FILENO);
        std::signal(SIGINT, SIG_DFL); // which may be ignored where the tests were started
        ::execv(K7_PROGRAM, const_cast<char* const*>(arguments.data()));
        ::_exit(127);
    }
    return child;
}

int Wait(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

TEST_F(Program, TheBuiltFileFindsItsPlugIn) {
    EXPECT_EQ(Wait(Start({"info", "Clean"})), 0);
    EXPECT_EQ(Wait(Start({"info", "Unclean"})), 2);
}

TEST_F(Program, AFullDeviceIsAFailureAndAClosedPipeIsNot) {
    const std::string k7 = std::string("'") + K7_PROGRAM + "' ";
    const auto code = [&](const std::string& words) {
        return WEXITSTATUS(std::system(("bash -c \"" + k7 + words + "\"").c_str()));
    };
    EXPECT_EQ(code("list > /dev/full 2>/dev/null"), 1);
    EXPECT_EQ(
        code("render Clean -i sample: -f 0-2 -o out.%d.png 2>/dev/null | true; exit \\${PIPESTATUS[0]}"), 0);
    EXPECT_TRUE(folder_.Has("out.2.png"));
}

TEST_F(Program, NothingIsLoadedFromTheWorkingFolder) {
    const std::string entries = std::string("readelf -d '") + K7_PROGRAM + "' | grep RUNPATH > path.txt";
    ASSERT_EQ(std::system(entries.c_str()), 0);
    const std::string path = folder_.Get("path.txt");
    EXPECT_NE(path.find("[$ORIGIN"), std::string::npos) << path;
    for (const char* empty : {":]", "[:", "::"}) EXPECT_EQ(path.find(empty), std::string::npos) << path;
}

TEST_F(Program, CtrlCLeavesOnlyCompleteFrames) {
    for (const std::size_t frames : {0u, 1u, 3u}) {
        const pid_t child = Start({"render", "Clean", "-i", "sample:", "-o", "out.%02d.png", "--quiet"});
        for (int i = 0; i < 6000 && !folder_.Has("out.0" + std::to_string(frames) + ".png"); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            if (frames == 0 && i == 30) break; // somewhere in loading or in the first frame
        }
        ::kill(child, SIGINT);
        const int code = Wait(child);
        // Before k7 has set up its render, the signal ends it at once.
        EXPECT_TRUE(code == 130 || (code == -SIGINT && frames == 0)) << code;
        EXPECT_GE(folder_.Count(), frames);
        EXPECT_LT(folder_.Count(), 24u);
        for (const auto& entry : std::filesystem::directory_iterator(folder_.Path())) {
            EXPECT_EQ(entry.path().extension(), ".png") << entry.path();
            EXPECT_NO_THROW(ReadPicture(entry.path().string()));
            std::filesystem::remove(entry.path());
        }
    }
}

} // namespace
} // namespace app::test
