#pragma once

#include "platform/platformapi.h"
#include "platform/platformthreadsafety.h"

#include <cstddef>

namespace platform {

/// The system's recursive lock: the thread that holds it may enter again, and must leave as often.
///
/// Threads: any thread may enter; only the holder may leave.
/// Failure: none. Destroying a lock that is held is a fault of the caller.
class PLATFORM_API TU_CAPABILITY("mutex") CriticalSection
{
public:
    CriticalSection() noexcept;
    ~CriticalSection();
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void Enter() noexcept TU_ACQUIRE();
    void Leave() noexcept TU_RELEASE();

private:
#if defined(_WIN32)
    alignas(void*) unsigned char m_native[40]; // a CRITICAL_SECTION
#else
    static constexpr std::size_t kNativeSize = 64; // the largest pthread_mutex_t known

    alignas(std::max_align_t) unsigned char m_native[kNativeSize];
#endif
};

} // namespace platform
