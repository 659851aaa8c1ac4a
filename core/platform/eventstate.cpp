#include "platform/eventstate.h"

#include "platform/eventwaiter.h"
#include "platform/stopguard.h"

#include <cstddef>

namespace platform {
namespace {

    /// Waiters that have been let through, to be woken when no lock is held any more, so that they
    /// do not run into it; without memory of its own, a few at a time.
    class WakeList
    {
    public:
        ~WakeList() { wakeAll(); }
        void Add(EventWaiter& waiter)
        {
            if (m_count == kRoom) {
                wakeAll();
            }
            m_waiters[m_count++] = &waiter;
        }

    private:
        static constexpr std::size_t kRoom = 32;

        void wakeAll()
        {
            for (; m_count > 0; --m_count) {
                m_waiters[m_count - 1]->Wake();
            }
        }

        EventWaiter* m_waiters[kRoom];
        std::size_t m_count = 0;
    };

} // namespace

void EventState::ReleaseUse() noexcept
{
    if (m_uses.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this;
    }
}

void EventState::Set() noexcept
{
    const StopGuard unstopped;
    // Whoever is let through may end the event before this call has left the lock.
    AddUse();
    if (m_manual) {
        setManual();
    } else {
        setAutomatic();
    }
    ReleaseUse();
}

void EventState::setManual() noexcept
{
    WakeList woken;
    const LockGuard guard(m_lock);
    m_set.store(true, std::memory_order_release);
    while (SEventWait* place = m_first) {
        EventWaiter& waiter = *place->waiter;
        const std::uint32_t index = place->index;
        unlist(*place);
        if (waiter.Release(index)) {
            woken.Add(waiter);
        }
    }
}

void EventState::setAutomatic() noexcept
{
    WakeList woken;
    const LockGuard guard(m_lock);
    while (SEventWait* place = m_first) {
        EventWaiter& waiter = *place->waiter;
        const std::uint32_t index = place->index;
        unlist(*place);
        if (waiter.Release(index)) { // else another of its events was faster, or it has given up
            woken.Add(waiter);
            return;
        }
    }
    m_set.store(true, std::memory_order_release);
}

void EventState::Reset() noexcept
{
    const StopGuard unstopped;
    const LockGuard guard(m_lock);
    m_set.store(false, std::memory_order_relaxed);
}

bool EventState::TryTake() noexcept
{
    if (!m_set.load(std::memory_order_acquire)) {
        return false;
    }
    if (m_manual) {
        return true;
    }
    const StopGuard unstopped;
    const LockGuard guard(m_lock);
    const bool taken = m_set.load(std::memory_order_acquire);
    m_set.store(false, std::memory_order_relaxed);
    return taken;
}

EEnter EventState::Enter(SEventWait& place) noexcept
{
    const StopGuard unstopped;
    const LockGuard guard(m_lock);
    if (m_set.load(std::memory_order_acquire)) {
        if (!place.waiter->Release(place.index)) {
            return eE_Late;
        }
        m_set.store(m_manual, std::memory_order_relaxed);
        return eE_Taken;
    }
    place.previous = m_last;
    place.next = nullptr;
    (m_last != nullptr ? m_last->next : m_first) = &place;
    m_last = &place;
    place.listed = true;
    return eE_Listed;
}

void EventState::Leave(SEventWait& place) noexcept
{
    const StopGuard unstopped;
    const LockGuard guard(m_lock);
    if (place.listed) {
        unlist(place);
    }
}

void EventState::unlist(SEventWait& place) noexcept
{
    (place.previous != nullptr ? place.previous->next : m_first) = place.next;
    (place.next != nullptr ? place.next->previous : m_last) = place.previous;
    place.listed = false;
}

} // namespace platform
