#pragma once

#include <cstdint>

namespace k7 {

// Everything that the code below the host asks of the operating system.

/// Seconds of the high-resolution clock, above 0, from an arbitrary start.
double HighResolutionSeconds();

/// Whole seconds of local time since midnight.
double LocalDaySeconds();

/// Milliseconds since the system started.
std::uint64_t TickMilliseconds();

/// Value of an environment variable, null if it is not set.
const char* EnvironmentValue(const char* name);

/// The folder that holds an installation by default, without a separator at its end.
extern const char* const kDefaultRoot;

/// The separator between the folders of a path.
extern const char kPathSeparator;

/// Whether this process already writes to a console of its own.
bool HasOwnConsole();

/// Opens a console with a title for this process. Null if that fails.
void* OpenConsole(const char* title);

/// Puts the console's window above all others; false while there is no such window.
bool RaiseConsole(const char* title);

void WriteToConsole(void* console, const char* text);

} // namespace k7
