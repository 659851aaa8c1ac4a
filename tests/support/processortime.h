#pragma once

#include <gtest/gtest.h>

#include <ctime>

/// Leaves out, by name, tests that measure the processor time of the process where the C library
/// has only that of the clock on the wall.
#if defined(_WIN32)
#define SKIP_WITHOUT_PROCESSOR_TIME()                                                              \
    GTEST_SKIP() << "the C library of Windows does not tell the processor time"
#else
#define SKIP_WITHOUT_PROCESSOR_TIME() static_cast<void>(0)
#endif

inline double GetProcessorSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }
