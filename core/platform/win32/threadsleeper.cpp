#include "platform/threadsleeper.h"

#include "platform/platformclock.h"
#include "platform/win32/platformwindows.h"

namespace platform {
namespace {

    static_assert(INFINITE == kWaitForever);

    /// Until the event is set or the deadline is there; the system's clock may be a little early.
    DWORD waitUntil(HANDLE event, std::uint64_t deadline)
    {
        DWORD result = WAIT_TIMEOUT;
        do {
            result = ::WaitForSingleObject(event, GetMillisecondsUntil(deadline));
        } while (result == WAIT_TIMEOUT && GetMonotonicTime() < deadline);
        return result;
    }

} // namespace

ThreadSleeper::ThreadSleeper() noexcept
    : m_event(::CreateEventW(nullptr, FALSE, FALSE, nullptr))
{
}

ThreadSleeper::~ThreadSleeper()
{
    if (IsUsable()) {
        ::CloseHandle(m_event);
    }
}

bool ThreadSleeper::IsUsable() const noexcept { return m_event != nullptr; }

void ThreadSleeper::Wake() noexcept { ::SetEvent(m_event); }

EWait ThreadSleeper::Sleep(std::uint64_t deadline) noexcept
{
    const DWORD result = waitUntil(m_event, deadline);
    if (result != WAIT_OBJECT_0) {
        if (Release(kGone)) {
            return result == WAIT_TIMEOUT ? eW_TimedOut : eW_Failed;
        }
        // Let through at the last moment: the one who did that still needs the event.
        ::WaitForSingleObject(m_event, INFINITE);
    }
    return eW_Signaled;
}

} // namespace platform
