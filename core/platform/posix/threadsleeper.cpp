#include "platform/threadsleeper.h"

#include "platform/posix/futex.h"

namespace platform {

bool ThreadSleeper::IsUsable() const noexcept { return true; }

void ThreadSleeper::Wake() noexcept { WakeOne(m_word); }

EWait ThreadSleeper::Sleep(std::uint64_t deadline) noexcept
{
    while (m_word.load(std::memory_order_acquire) == kAsleep) {
        const EWordWait wait = WaitOnWord(m_word, kAsleep, deadline);
        if (wait != eWW_Woken && Release(kGone)) {
            return wait == eWW_TimedOut ? eW_TimedOut : eW_Failed;
        }
    }
    return eW_Signaled;
}

} // namespace platform
