#pragma once

/// Notes for Clang's thread-safety analysis. Clang checks them; for other compilers they are
/// comments that say which lock guards what.
#if defined(__clang__)
#define TU_THREAD_NOTE(note) __attribute__((note))
#else
#define TU_THREAD_NOTE(note)
#endif

#define TU_CAPABILITY(name) TU_THREAD_NOTE(capability(name))
#define TU_SCOPED_CAPABILITY TU_THREAD_NOTE(scoped_lockable)
#define TU_GUARDED_BY(lock) TU_THREAD_NOTE(guarded_by(lock))
#define TU_ACQUIRE(...) TU_THREAD_NOTE(acquire_capability(__VA_ARGS__))
#define TU_RELEASE(...) TU_THREAD_NOTE(release_capability(__VA_ARGS__))
#define TU_REQUIRES(...) TU_THREAD_NOTE(requires_capability(__VA_ARGS__))
#define TU_EXCLUDES(...) TU_THREAD_NOTE(locks_excluded(__VA_ARGS__))
#define TU_NO_THREAD_SAFETY_ANALYSIS TU_THREAD_NOTE(no_thread_safety_analysis)
