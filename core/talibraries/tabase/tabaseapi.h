#pragma once

/// Marks what the library `tabase` exports.
#if defined(_WIN32)
#if defined(TABASE_BUILD)
#define TABASE_API __declspec(dllexport)
#else
#define TABASE_API __declspec(dllimport)
#endif
#else
#define TABASE_API __attribute__((visibility("default")))
#endif
