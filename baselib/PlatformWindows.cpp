#ifdef _WIN32

#include "baselib/Platform.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

namespace k7 {

const char* const kDefaultRoot = "C:\\Program Files\\Quorvane";
const char kPathSeparator = '\\';

double HighResolutionSeconds() {
    LARGE_INTEGER frequency;
    LARGE_INTEGER count;
    QueryPerformanceFrequency(&frequency);
    QueryPerformanceCounter(&count);
    return static_cast<double>(count.QuadPart) / static_cast<double>(frequency.QuadPart);
}

double LocalDaySeconds() {
    SYSTEMTIME local;
    GetLocalTime(&local);
    return (local.wHour * 60 + local.wMinute) * 60 + local.wSecond;
}

std::uint64_t TickMilliseconds() {
    return GetTickCount64();
}

const char* EnvironmentValue(const char* name) {
    return std::getenv(name);
}

bool HasOwnConsole() {
    char title[1024]; // a shorter buffer than the title may count as a failure
    return GetConsoleTitleA(title, sizeof title) != 0;
}

void* OpenConsole(const char* title) {
    AllocConsole();
    // Closing the console must not end the host.
    if (!SetConsoleCtrlHandler([](DWORD) -> BOOL { return TRUE; }, TRUE))
        std::printf("failed to set console handler");
    SetConsoleTitleA(title);
    Sleep(40); // until the window has the title
    HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
    return console == INVALID_HANDLE_VALUE ? nullptr : console;
}

bool RaiseConsole(const char* title) {
    HWND window = FindWindowA(nullptr, title);
    if (!window) return false;
    SetWindowPos(window, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
    return true;
}

void WriteToConsole(void* console, const char* text) {
    DWORD written;
    WriteFile(console, text, static_cast<DWORD>(std::strlen(text)), &written, nullptr);
}

} // namespace k7

#endif
