#pragma once

#include "platform/platformapi.h"

namespace platform {

class ThreadState;

/// While it lives, the calling thread is neither suspended nor killed by Thread's operations: these
/// wait until it goes. It stands where a thread that stops half-way would stop others, too: in the
/// short passages in which it holds a lock of ours. May be nested; nothing in it may sleep for
/// long.
class PLATFORM_API StopGuard
{
public:
    StopGuard() noexcept;
    ~StopGuard();
    StopGuard(const StopGuard&) = delete;
    StopGuard& operator=(const StopGuard&) = delete;

#if defined(_WIN32)
private:
    ThreadState* m_state; // null on a thread that nobody can stop
#endif
};

} // namespace platform
