// The mark of what leaves the shared library. Everything else in it is hidden.
#pragma once

/// \def TYMPAN_API
/// Marks a class or function of the interface.
#if defined(_WIN32)
#if defined(TYMPAN_BUILDING)
#define TYMPAN_API __declspec(dllexport)
#else
#define TYMPAN_API __declspec(dllimport)
#endif
#else
#define TYMPAN_API __attribute__((visibility("default")))
#endif
