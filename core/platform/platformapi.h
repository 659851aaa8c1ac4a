#pragma once

/// Marks what the library `groundwork`, which contains the platform services, exports.
#if defined(_WIN32)
#if defined(GROUNDWORK_BUILD)
#define PLATFORM_API __declspec(dllexport)
#else
#define PLATFORM_API __declspec(dllimport)
#endif
#else
#define PLATFORM_API __attribute__((visibility("default")))
#endif
