#ifndef _WIN32

#include "baselib/Platform.h"

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <unistd.h>

namespace k7 {

namespace {

timespec Monotonic() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time;
}

} // namespace

const char* const kDefaultRoot = "/opt/Quorvane";
const char kPathSeparator = '/';

double HighResolutionSeconds() {
    const timespec time = Monotonic();
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

double LocalDaySeconds() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return (local.tm_hour * 60 + local.tm_min) * 60 + local.tm_sec;
}

std::uint64_t TickMilliseconds() {
    const timespec time = Monotonic();
    return static_cast<std::uint64_t>(time.tv_sec) * 1000 +
           static_cast<std::uint64_t>(time.tv_nsec) / 1000000;
}

const char* EnvironmentValue(const char* name) {
    return std::getenv(name);
}

bool HasOwnConsole() {
    return isatty(STDERR_FILENO) == 1;
}

// The nearest thing to a console window is the terminal that the process was started from.

void* OpenConsole(const char* title) {
    std::FILE* terminal = std::fopen("/dev/tty", "w");
    if (terminal) std::fprintf(terminal, "\033]0;%s\007", title);
    return terminal;
}

bool RaiseConsole(const char*) {
    return true; // a terminal stays where its user put it
}

void WriteToConsole(void* console, const char* text) {
    auto* stream = static_cast<std::FILE*>(console);
    std::fputs(text, stream);
    std::fflush(stream);
}

} // namespace k7

#endif
