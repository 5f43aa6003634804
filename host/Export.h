#pragma once

// Marks what the shared host library exports to the program and to plug-ins. It exports nothing where the
// host layer is part of another module.
#if defined(K7HOST_INSIDE)
#define K7HOST_API
#elif defined(_WIN32) && defined(K7HOST_BUILDING)
#define K7HOST_API __declspec(dllexport)
#elif defined(_WIN32)
#define K7HOST_API __declspec(dllimport)
#else
#define K7HOST_API __attribute__((visibility("default")))
#endif
