#pragma once

/// Marks what the library `tabase` exports. The coders are part of that library.
#if defined(_WIN32)
#if defined(TABASE_BUILD)
#define TACOMPRESSION_API __declspec(dllexport)
#else
#define TACOMPRESSION_API __declspec(dllimport)
#endif
#else
#define TACOMPRESSION_API __attribute__((visibility("default")))
#endif
