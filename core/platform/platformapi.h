#pragma once

/// PLATFORM_API marks what the library `groundwork`, which contains the platform services, exports;
/// PLATFORM_TEMPLATE a class template whose instances are to be one type in all libraries, even
/// where these hide their symbols.
#if defined(_WIN32)
#if defined(GROUNDWORK_BUILD)
#define PLATFORM_API __declspec(dllexport)
#else
#define PLATFORM_API __declspec(dllimport)
#endif
#define PLATFORM_TEMPLATE
#else
#define PLATFORM_API __attribute__((visibility("default")))
#define PLATFORM_TEMPLATE __attribute__((visibility("default")))
#endif
