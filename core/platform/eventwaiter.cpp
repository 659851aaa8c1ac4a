#include "platform/eventwaiter.h"

#include "platform/platformclock.h"
#include "platform/platformwait.h"

#include <new>

namespace platform {
namespace {

    constinit thread_local EventWaiter* t_waiter = nullptr;
    constinit thread_local std::atomic<EventWaiter*>* t_place = nullptr;

    void note(EventWaiter* waiter)
    {
        t_waiter = waiter;
        if (t_place != nullptr) {
            t_place->store(waiter, std::memory_order_release);
        }
    }

    /// Deletes the waiter of a thread that somebody else has started. One that other objects of the
    /// thread make while they are destroyed even later is lost.
    struct SWaiterOfThread
    {
        ~SWaiterOfThread() { EventWaiter::EndOfThread(); }
    };

    /// Kept where leak checkers find them.
    constinit std::atomic<EventWaiter*> s_abandoned{ nullptr };

} // namespace

EventWaiter* EventWaiter::GetCurrent() noexcept
{
    if (t_waiter == nullptr) {
        note(new (std::nothrow) EventWaiter);
        if (t_place == nullptr) {
            [[maybe_unused]] static thread_local const SWaiterOfThread ofThread;
        }
    }
    return t_waiter;
}

void EventWaiter::NoteIn(std::atomic<EventWaiter*>& place) noexcept
{
    t_place = &place;
    place.store(t_waiter, std::memory_order_release);
}

void EventWaiter::EndOfThread() noexcept
{
    EventWaiter* waiter = t_waiter;
    note(nullptr);
    delete waiter;
}

void EventWaiter::Abandon(EventWaiter& waiter) noexcept
{
    waiter.m_word.store(kGone, std::memory_order_release);
    waiter.m_nextAbandoned = s_abandoned.load(std::memory_order_relaxed);
    while (!s_abandoned.compare_exchange_weak(
        waiter.m_nextAbandoned, &waiter, std::memory_order_release, std::memory_order_relaxed)) { }
}

bool EventWaiter::Release(std::uint32_t index) noexcept
{
    std::uint32_t state = kAsleep;
    return m_word.compare_exchange_strong(
        state, index + 1, std::memory_order_acq_rel, std::memory_order_acquire);
}

EWait EventWaiter::Wait(const Event* const* events, std::size_t count, std::uint64_t deadline,
    std::size_t& index) noexcept
{
    if (!makePlaces(count)) {
        return eW_Failed;
    }
    m_word.store(kAsleep, std::memory_order_relaxed);
    const EWait result = enterAll(events, count) ? sleep(deadline) : eW_Failed;
    leaveAll();
    const std::uint32_t state = m_word.load(std::memory_order_relaxed);
    if (state == kGone) {
        return result;
    }
    index = state - 1;
    return eW_Signaled;
}

bool EventWaiter::makePlaces(std::size_t count) noexcept
{
    if (count >= kGone) {
        return false; // an index of each must fit the word
    }
    m_places = m_ownPlaces;
    if (count <= kOwnPlaces) {
        return true;
    }
    if (count > m_moreCount) {
        m_moreCount = 0;
        m_morePlaces.reset(new (std::nothrow) SEventWait[count]);
        if (m_morePlaces == nullptr) {
            return false;
        }
        m_moreCount = count;
    }
    m_places = m_morePlaces.get();
    return true;
}

/// Stops early where an event lets the waiter through. False without memory, unless one has done so
/// meanwhile.
bool EventWaiter::enterAll(const Event* const* events, std::size_t count) noexcept
{
    for (m_entered = 0; m_entered < count;) {
        EventState* event = events[m_entered]->share();
        if (event == nullptr) {
            std::uint32_t state = kAsleep;
            return !m_word.compare_exchange_strong(state, kGone, std::memory_order_acquire);
        }
        SEventWait& place = m_places[m_entered];
        place.waiter = this;
        place.index = static_cast<std::uint32_t>(m_entered);
        place.event = event;
        event->AddUse();
        ++m_entered;
        if (event->Enter(place)) {
            return true;
        }
    }
    return true;
}

void EventWaiter::leaveAll() noexcept
{
    for (; m_entered > 0; --m_entered) {
        SEventWait& place = m_places[m_entered - 1];
        place.event->Leave(place);
        place.event->ReleaseUse();
    }
}

/// Answers what ended the wait where no event did.
EWait EventWaiter::sleep(std::uint64_t deadline) noexcept
{
    while (m_word.load(std::memory_order_acquire) == kAsleep) {
        const EWordWait wait = WaitOnWord(m_word, kAsleep, deadline);
        std::uint32_t state = kAsleep;
        if (wait != eWW_Woken
            && m_word.compare_exchange_strong(state, kGone, std::memory_order_acquire)) {
            return wait == eWW_TimedOut ? eW_TimedOut : eW_Failed;
        }
    }
    return eW_Signaled;
}

} // namespace platform
