#pragma once

#include <cstdio>
#include <mutex>

#ifdef __MINGW32__
#define K7_PRINTF(text, arguments) __attribute__((format(gnu_printf, text, arguments)))
#else
#define K7_PRINTF(text, arguments) __attribute__((format(printf, text, arguments)))
#endif

namespace k7 {

/// Levels of log lines.
enum LogLevel {
    kLogNone = 0, ///< never written
    kLogError = 1,
    kLogWarning = 2,
    kLogInfo = 3,
    kLogDebug = 4,
    kLogTrace = 5,
    kLogMore = 6, ///< continues the line before
};

/// A log: lines "(K7 LIB) hh:mm:ss.ss LEVEL: text" on a stream. Several threads may write to it at once.
struct K7Log {
    /// `stream` null: the standard error stream, from the first line on.
    explicit K7Log(std::FILE* stream = nullptr);

    double TickBase = 0.0;    ///< the clock when it was last set by the wall clock; 0 for never
    double DaySeconds = 0.0;  ///< seconds since midnight at TickBase
    int Level = kLogInfo;     ///< highest level written; a negative one silences the log
    int LastLevel = -1;       ///< of the last line written
    std::FILE* Stream;        ///< the caller's, never closed
    char Text[4096] = {};     ///< the line being written; what does not fit is cut off
    char Tag[9] = "(K7 LIB)"; ///< head of each line
    bool HasConsole;          ///< the process had a console of its own at construction
    double (*Clock)();        ///< high-resolution seconds
    double (*WallClock)();    ///< seconds since midnight
    std::mutex Lock;
};

/// The log of the library.
K7Log& StaticLog();

/// Lines of a log go to the debug console as well, unless the process has a console of its own.
extern bool K7LogEcho;

/// A new line, if its level passes. `text` is written as it stands, with a newline if it has none.
void K7LogMessage(K7Log* log, int level, const char* text);

/// A line that continues the last one written, if the level of that one still passes.
void K7LogMore(K7Log* log, const char* text);

/// The same on the library's log, with a printf format.
void k7_log(int level, const char* format, ...) K7_PRINTF(2, 3);
void k7_log_more(const char* format, ...) K7_PRINTF(1, 2);

/// The debug console: null until something is written to it.
extern void* ConsoleHandle;

/// Writes to the debug console, which is opened on first use; if there is none, the text is dropped.
void ConsolePrint(const char* format, ...) K7_PRINTF(1, 2);

} // namespace k7
