#include "platform/posix/threadgate.h"

#include "platform/platformclock.h"
#include "platform/posix/futex.h"

namespace platform {

bool ThreadGate::Stand() noexcept
{
    for (;;) {
        std::uint32_t state = m_state.load(std::memory_order_acquire);
        if (state == eG_Closed) {
            m_stands.store(1, std::memory_order_release);
            WakeAll(m_stands);
            (void)WaitOnWord(m_state, eG_Closed, kNever);
        } else if (state == eG_Open
            || (state == eG_Opening
                && m_state.compare_exchange_strong(state, eG_Open, std::memory_order_acq_rel))) {
            return true; // or was asked by a signal that is no longer meant
        } else if (state == eG_Kill) {
            return false;
        }
    }
}

void ThreadGate::Leave() noexcept
{
    m_stands.store(1, std::memory_order_release);
    WakeAll(m_stands);
}

bool ThreadGate::Close() noexcept
{
    // A thread that has not noticed yet that it may go still stands here.
    std::uint32_t state = eG_Opening;
    if (m_state.compare_exchange_strong(state, eG_Closed, std::memory_order_acq_rel)
        || state != eG_Open) {
        return false;
    }
    m_stands.store(0, std::memory_order_relaxed);
    m_state.store(eG_Closed, std::memory_order_release);
    return true;
}

bool ThreadGate::WaitUntilItStands(std::uint64_t deadline) const noexcept
{
    while (m_stands.load(std::memory_order_acquire) == 0) {
        if (WaitOnWord(m_stands, 0, deadline) != eWW_Woken) {
            return m_stands.load(std::memory_order_acquire) != 0;
        }
    }
    return true;
}

void ThreadGate::Open() noexcept
{
    std::uint32_t state = eG_Closed;
    if (m_state.compare_exchange_strong(state, eG_Opening, std::memory_order_acq_rel)) {
        WakeAll(m_state);
    }
}

void ThreadGate::OpenToKill() noexcept
{
    m_state.store(eG_Kill, std::memory_order_release);
    WakeAll(m_state);
}

} // namespace platform
