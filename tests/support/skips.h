#pragma once

#include <gtest/gtest.h>

/// Leaves out, by name, tests that interrupt a thread where it stands: the thread sanitizer delays
/// signals until the thread calls the C library.
#if defined(__SANITIZE_THREAD__)
#define TA_THREAD_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TA_THREAD_SANITIZER 1
#endif
#endif
#if defined(TA_THREAD_SANITIZER)
#define SKIP_IF_SIGNALS_ARE_DELAYED() GTEST_SKIP() << "the thread sanitizer delays signals"
#else
#define SKIP_IF_SIGNALS_ARE_DELAYED() static_cast<void>(0)
#endif
