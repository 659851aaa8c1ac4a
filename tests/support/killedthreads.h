#pragma once

#include <gtest/gtest.h>

/// Leaves out, by name, tests that suspend or kill threads where a sanitizer does not let them.

#if defined(__SANITIZE_THREAD__)
#define TA_THREAD_SANITIZER
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TA_THREAD_SANITIZER
#endif
#endif

#if defined(TA_THREAD_SANITIZER)
#define SKIP_IF_SIGNALS_ARE_DELAYED()                                                              \
    GTEST_SKIP() << "the thread sanitizer delays the signals that stop a thread"
#else
#define SKIP_IF_SIGNALS_ARE_DELAYED() static_cast<void>(0)
#endif
