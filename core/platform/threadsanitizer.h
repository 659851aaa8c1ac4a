#pragma once

/// TA_THREAD_SANITIZER is defined where the thread sanitizer watches: it wants to hear of locks
/// that are not the system's, and it delays signals.
#if defined(__SANITIZE_THREAD__)
#define TA_THREAD_SANITIZER
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define TA_THREAD_SANITIZER
#endif
#endif
