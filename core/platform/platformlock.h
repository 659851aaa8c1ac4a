#pragma once

#include "platform/platformapi.h"
#include "platform/platformthreadsafety.h"

#if !defined(_WIN32)
#include <atomic>
#include <cstdint>
#endif

namespace platform {

/// The recursive lock: the thread that holds it may enter again, and must leave as often.
///
/// On Windows it is the system's own; elsewhere a word of memory, so that it needs no object of the
/// system's and a lock that nobody waits for costs two atomic operations. It is not fair: a thread
/// that runs may enter before one that has been woken.
///
/// Threads: any thread may enter; only the holder may leave.
/// Failure: none. Destroying a lock that is held is a fault of the caller. A thread that is killed
///          inside leaves it locked for ever.
class PLATFORM_API TU_CAPABILITY("mutex") CriticalSection
{
public:
    CriticalSection() noexcept;
    ~CriticalSection();
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void Enter() noexcept TU_ACQUIRE();
    /// The same for locks whose order is not fixed but follows from data, as that of a tree that
    /// changes does: the thread sanitizer then looks for no order in them.
    void EnterInAnyOrder() noexcept TU_ACQUIRE();
    void Leave() noexcept TU_RELEASE();

private:
#if defined(_WIN32)
    alignas(void*) unsigned char m_native[40]; // a CRITICAL_SECTION
#else
    void enter() noexcept;
    void enterSlowly(std::uint32_t self) noexcept;
    std::uint32_t lookAgain(std::uint32_t holder) const noexcept;

    std::atomic<std::uint32_t> m_holder{ 0 }; // the thread's number, and a bit that others wait
    std::uint32_t m_again = 0; // how often the holder has entered again
#endif
};

/// Holds a critical section for as long as it lives.
class TU_SCOPED_CAPABILITY LockGuard
{
public:
    explicit LockGuard(CriticalSection& lock) noexcept TU_ACQUIRE(lock)
        : m_lock(lock)
    {
        m_lock.Enter();
    }
    ~LockGuard() TU_RELEASE() { m_lock.Leave(); }
    LockGuard(const LockGuard&) = delete;
    LockGuard& operator=(const LockGuard&) = delete;

private:
    CriticalSection& m_lock;
};

} // namespace platform
