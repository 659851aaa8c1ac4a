#pragma once

#include "platform/threadsanitizer.h"

#include <gtest/gtest.h>

/// How large the trees of a test may be under a sanitizer.

#if defined(TA_THREAD_SANITIZER)
/// Leaves out, by name, tests of deep trees: a walk holds the lock of each node on its way.
#define SKIP_IF_LOCKS_PER_THREAD_ARE_FEW()                                                         \
    GTEST_SKIP() << "the thread sanitizer ends a program where a thread holds 65 locks"
#else
#define SKIP_IF_LOCKS_PER_THREAD_ARE_FEW() static_cast<void>(0)
#endif

#if defined(TA_THREAD_SANITIZER)
inline constexpr unsigned int kWideTree = 20'000;
#elif defined(__SANITIZE_ADDRESS__) || defined(__clang__)
inline constexpr unsigned int kWideTree = 100'000;
#else
inline constexpr unsigned int kWideTree = 1'000'000;
#endif
inline constexpr unsigned int kDeepTree = 100'000;
