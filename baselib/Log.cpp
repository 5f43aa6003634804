#include "baselib/Log.h"

#include "baselib/Platform.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstring>

namespace k7 {

namespace {

constexpr double kDay = 86400.0;
constexpr const char* kLevelWords[] = {"NONE ", "ERROR", "WARN ", "INFO ", "DEBUG", "TRACE"};
constexpr const char* kConsoleTitle = "Quorvane Debug";

// Constructed with the library, so that HasConsole describes the process as it was at the start.
[[maybe_unused]] const K7Log& loadedLog = StaticLog();

/// Seconds since midnight by the log's clock, which the wall clock sets once.
double TimeOfDay(K7Log& log) {
    const double clock = log.Clock();
    if (log.TickBase == 0.0 || log.TickBase > clock) {
        log.DaySeconds = log.WallClock();
        log.TickBase = clock;
    }
    const double time = clock - log.TickBase + log.DaySeconds;
    return time >= kDay ? std::fmod(time, kDay) : time;
}

void SetText(K7Log& log, const char* text) {
    constexpr std::size_t room = sizeof log.Text - 2;
    std::size_t length = std::min(std::strlen(text), room);
    std::memcpy(log.Text, text, length);
    if (length == 0 || log.Text[length - 1] != '\n') log.Text[length++] = '\n';
    log.Text[length] = '\0';
}

void WriteLine(K7Log& log, int level, const char* text) {
    SetText(log, text);
    char head[64];
    if (level < kLogMore) {
        const double time = TimeOfDay(log);
        const int whole = static_cast<int>(time);
        const int hours = whole / 3600;
        const int minutes = (whole - 3600 * hours) / 60;
        const double seconds = time - (60 * hours + minutes) * 60;
        std::snprintf(head, sizeof head, "%s %02d:%02d:%05.2f %s: ", log.Tag, hours, minutes, seconds,
                      kLevelWords[level]);
    } else {
        std::snprintf(head, sizeof head, "%s                  : ", log.Tag);
    }
    std::fprintf(log.Stream, "%s%s", head, log.Text);
    if (K7LogEcho && !log.HasConsole) ConsolePrint("%s%s", head, log.Text);
}

} // namespace

bool K7LogEcho = false;
void* ConsoleHandle = nullptr;

K7Log::K7Log(std::FILE* stream)
    : Stream(stream)
    , HasConsole(HasOwnConsole())
    , Clock(HighResolutionSeconds)
    , WallClock(LocalDaySeconds) {}

K7Log& StaticLog() {
    static K7Log log;
    return log;
}

void K7LogMessage(K7Log* log, int level, const char* text) {
    const std::lock_guard lock(log->Lock);
    if (log->Level < 0) return;
    if (!log->Stream) log->Stream = stderr;
    if (level < kLogError) return;
    if (level >= kLogMore) level = kLogTrace;
    if (level > log->Level) return;
    WriteLine(*log, level, text);
    log->LastLevel = level;
}

void K7LogMore(K7Log* log, const char* text) {
    const std::lock_guard lock(log->Lock);
    if (log->LastLevel >= kLogError && log->LastLevel <= log->Level) WriteLine(*log, kLogMore, text);
}

void k7_log(int level, const char* format, ...) {
    char text[sizeof K7Log::Text];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    K7LogMessage(&StaticLog(), level, text);
}

void k7_log_more(const char* format, ...) {
    char text[sizeof K7Log::Text];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    K7LogMore(&StaticLog(), text);
}

void ConsolePrint(const char* format, ...) {
    char text[sizeof K7Log::Text + 64];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);

    static std::mutex lock;
    static bool raised = false;
    const std::lock_guard guard(lock);
    if (!ConsoleHandle) ConsoleHandle = OpenConsole(kConsoleTitle);
    if (!ConsoleHandle) return;
    if (!raised) raised = RaiseConsole(kConsoleTitle);
    WriteToConsole(ConsoleHandle, text);
}

} // namespace k7
