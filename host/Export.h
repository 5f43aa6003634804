#pragma once

// Marks what the shared host library offers to the program and to plug-ins.
// Where the host layer is a part of another module it offers nothing.
#if defined(K7HOST_INSIDE)
#define K7HOST_API
#elif defined(_WIN32) && defined(K7HOST_BUILDING)
#define K7HOST_API __declspec(dllexport)
#elif defined(_WIN32)
#define K7HOST_API __declspec(dllimport)
#else
#define K7HOST_API __attribute__((visibility("default")))
#endif
