#include "baselib/Log.h"

#include "tests/support/TextFile.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace k7::test {
namespace {

double clockNow = 0.0;

/// A log on a file of its own whose clock started at 100 s, when the wall clock stood at `wall`.
struct LogFixture : testing::Test {
    LogFixture() : log(file.Stream) {
        clockNow = 100.0;
        log.Clock = [] { return clockNow; };
        log.WallClock = [] { return 13.0 * 3600 + 5 * 60 + 7; };
    }
    TextFile file;
    K7Log log;
};
using Log = LogFixture;

TEST_F(Log, LineHasTagTimeLevelAndText) {
    log.Level = kLogTrace;
    K7LogMessage(&log, kLogError, "no lens\n");
    clockNow += 60.25;
    for (int level = -1; level <= 7; ++level) K7LogMessage(&log, level, "x");
    K7LogMessage(&log, kLogInfo, "100%s of %n\n"); // not a format
    K7LogMessage(&log, kLogInfo, "");
    EXPECT_EQ(file.Text(), "(K7 LIB) 13:05:07.00 ERROR: no lens\n"
                           "(K7 LIB) 13:06:07.25 ERROR: x\n"
                           "(K7 LIB) 13:06:07.25 WARN : x\n"
                           "(K7 LIB) 13:06:07.25 INFO : x\n"
                           "(K7 LIB) 13:06:07.25 DEBUG: x\n"
                           "(K7 LIB) 13:06:07.25 TRACE: x\n"
                           "(K7 LIB) 13:06:07.25 TRACE: x\n"
                           "(K7 LIB) 13:06:07.25 TRACE: x\n"
                           "(K7 LIB) 13:06:07.25 INFO : 100%s of %n\n"
                           "(K7 LIB) 13:06:07.25 INFO : \n");
}

TEST_F(Log, DroppedLineLeavesTheLastLevelAndANegativeLevelSilencesAll) {
    K7LogMore(&log, "nothing to continue");
    K7LogMessage(&log, kLogInfo, "kept");
    K7LogMessage(&log, kLogDebug, "dropped");
    EXPECT_EQ(log.LastLevel, kLogInfo);
    K7LogMore(&log, "more\n");
    log.Level = kLogWarning;
    K7LogMore(&log, "no longer");
    log.Level = -1;
    K7LogMessage(&log, kLogError, "silent");
    K7LogMore(&log, "silent");
    EXPECT_EQ(file.Text(), "(K7 LIB) 13:05:07.00 INFO : kept\n"
                           "(K7 LIB)                  : more\n");
}

TEST_F(Log, TimeWrapsAtMidnightAndIsSetAgainByAClockThatRanBackwards) {
    log.WallClock = [] { return 86398.5; };
    const double steps[] = {0.0, 1.5, 2.0 * 86400.0 + 61.0, -3e5};
    for (double step : steps) {
        clockNow += step;
        K7LogMessage(&log, kLogInfo, "");
    }
    EXPECT_EQ(log.TickBase, clockNow);
    EXPECT_EQ(file.Text(), "(K7 LIB) 23:59:58.50 INFO : \n"
                           "(K7 LIB) 00:00:00.00 INFO : \n"
                           "(K7 LIB) 00:01:01.00 INFO : \n"
                           "(K7 LIB) 23:59:58.50 INFO : \n");
}

TEST_F(Log, OverlongTextIsCut) {
    K7LogMessage(&log, kLogInfo, std::string(10000, 'x').c_str());
    EXPECT_EQ(file.Text(), "(K7 LIB) 13:05:07.00 INFO : " + std::string(4094, 'x') + "\n");
}

TEST_F(Log, ThreadsDoNotMixTheirLines) {
    std::vector<std::thread> threads;
    for (char letter : {'a', 'b', 'c', 'd'})
        threads.emplace_back([this, letter] {
            for (int i = 0; i < 50; ++i) K7LogMessage(&log, kLogInfo, std::string(200, letter).c_str());
        });
    for (std::thread& thread : threads) thread.join();
    const std::string text = file.Text();
    const std::size_t line = 28 + 200 + 1;
    ASSERT_EQ(text.size(), 200 * line);
    for (std::size_t at = 28; at < text.size(); at += line)
        EXPECT_EQ(text.substr(at, 200), std::string(200, text[at]));
}

/// The library's log on a file, restored at the end.
struct StaticLogFixture : testing::Test {
    StaticLogFixture() { StaticLog().Stream = file.Stream; }
    ~StaticLogFixture() override {
        StaticLog().Stream = nullptr;
        StaticLog().HasConsole = hadConsole;
        K7LogEcho = false;
        ConsoleHandle = nullptr;
    }
    TextFile file;
    const bool hadConsole = StaticLog().HasConsole;
};
using LibraryLog = StaticLogFixture;

TEST_F(LibraryLog, FormatsItsArguments) {
    k7_log(kLogError, "%s(%d)", "100%d", 7);
    k7_log_more("%c", '%');
    EXPECT_EQ(file.Text().substr(20), " ERROR: 100%d(7)\n(K7 LIB)                  : %\n");
}

#ifndef _WIN32 // there the handle is not a stream
TEST_F(LibraryLog, EchoesToTheConsoleUnlessTheProcessHasOne) {
    TextFile console;
    ConsoleHandle = console.Stream;
    StaticLog().HasConsole = false;
    k7_log(kLogInfo, "before");
    EXPECT_EQ(console.Text(), "");
    K7LogEcho = true;
    k7_log(kLogInfo, "50%%d");
    k7_log_more("after");
    EXPECT_EQ(console.Text().substr(20), " INFO : 50%d\n(K7 LIB)                  : after\n");

    StaticLog().HasConsole = true;
    const std::string seen = console.Text();
    k7_log(kLogInfo, "alone");
    EXPECT_EQ(console.Text(), seen);
    ConsolePrint("%d and %s\n", 1, "two");
    EXPECT_EQ(console.Text(), seen + "1 and two\n");
}
#endif

} // namespace
} // namespace k7::test
