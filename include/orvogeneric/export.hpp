#pragma once

// Symbols of the shared library are hidden unless marked; the public classes, the interface
// types and the automation entry points are what a host may link against.
#if defined(ORVO_STATIC)
#define ORVO_API
#elif defined(_WIN32)
#if defined(ORVO_BUILDING)
#define ORVO_API __declspec(dllexport)
#else
#define ORVO_API __declspec(dllimport)
#endif
#else
#define ORVO_API __attribute__((visibility("default")))
#endif
