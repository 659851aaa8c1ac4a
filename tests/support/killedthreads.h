#pragma once

#include <gtest/gtest.h>

/// What tests that suspend or kill threads need of the sanitizers.

#if defined(__SANITIZE_THREAD__)
#define TA_THREAD_SANITIZER
#endif
#if defined(__SANITIZE_ADDRESS__)
#define TA_ADDRESS_SANITIZER
#endif
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TA_THREAD_SANITIZER
#endif
#if __has_feature(address_sanitizer)
#define TA_ADDRESS_SANITIZER
#endif
#endif

#if defined(TA_ADDRESS_SANITIZER)
#include <sanitizer/lsan_interface.h>
#endif

#if defined(TA_THREAD_SANITIZER)
#define SKIP_IF_SIGNALS_ARE_DELAYED()                                                              \
    GTEST_SKIP() << "the thread sanitizer delays the signals that stop a thread"
#else
#define SKIP_IF_SIGNALS_ARE_DELAYED() static_cast<void>(0)
#endif

/// While it lives, what this thread allocates may be lost: a thread that is killed inside the Set
/// of an event keeps the event's state for ever.
class MayLoseMemory
{
public:
#if defined(TA_ADDRESS_SANITIZER)
    MayLoseMemory() { __lsan_disable(); }
    ~MayLoseMemory() { __lsan_enable(); }
#else
    MayLoseMemory() { }
#endif
    MayLoseMemory(const MayLoseMemory&) = delete;
    MayLoseMemory& operator=(const MayLoseMemory&) = delete;
};
