#include "platform/eventwaiter.h"

#include "platform/platformclock.h"
#include "platform/stopguard.h"

#include <new>

namespace platform {
namespace {

    /// Where to note the thread's waiter, for whoever may kill the thread.
    constinit thread_local std::atomic<EventWaiter*>* t_place = nullptr;

    /// Kept where leak checkers find them.
    constinit std::atomic<EventWaiter*> s_abandoned{ nullptr };

} // namespace

const ThreadValue& EventWaiter::ofThread() noexcept
{
    static const ThreadValue s_waiter(
        [](void* waiter) { delete static_cast<EventWaiter*>(waiter); });
    return s_waiter;
}

EventWaiter* EventWaiter::GetCurrent() noexcept
{
    auto* waiter = static_cast<EventWaiter*>(ofThread().Get());
    if (waiter == nullptr) {
        const StopGuard unstopped;
        waiter = new (std::nothrow) EventWaiter(t_place);
        if (waiter != nullptr && !ofThread().Set(waiter)) {
            delete waiter;
            return nullptr;
        }
    }
    return waiter;
}

EventWaiter::EventWaiter(std::atomic<EventWaiter*>* place) noexcept
    : m_place(place)
{
    if (m_place != nullptr) {
        m_place->store(this, std::memory_order_release);
    }
}

EventWaiter::~EventWaiter()
{
    if (m_place != nullptr) {
        m_place->store(nullptr, std::memory_order_release);
    }
}

void EventWaiter::NoteIn(std::atomic<EventWaiter*>& place) noexcept { t_place = &place; }

void EventWaiter::EndOfThread() noexcept
{
    auto* waiter = static_cast<EventWaiter*>(ofThread().Get());
    if (waiter != nullptr && ofThread().Set(nullptr)) {
        delete waiter;
    }
    t_place = nullptr;
}

void EventWaiter::Abandon(EventWaiter& waiter) noexcept
{
    waiter.m_sleeper.Abandon();
    waiter.m_nextAbandoned = s_abandoned.load(std::memory_order_relaxed);
    while (!s_abandoned.compare_exchange_weak(
        waiter.m_nextAbandoned, &waiter, std::memory_order_release, std::memory_order_relaxed)) { }
}

EWait EventWaiter::Wait(const Event* const* events, std::size_t count, std::uint64_t deadline,
    std::size_t& index) noexcept
{
    if (!m_sleeper.IsUsable() || !makePlaces(count)) {
        return eW_Failed;
    }
    m_sleeper.Begin();
    const EWait result = waitIn(events, count, deadline);
    leaveAll();
    if (result == eW_Signaled) {
        index = m_sleeper.GetNumber() - 1;
    }
    return result;
}

bool EventWaiter::makePlaces(std::size_t count) noexcept
{
    if (count >= ThreadSleeper::kGone) {
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

EWait EventWaiter::waitIn(
    const Event* const* events, std::size_t count, std::uint64_t deadline) noexcept
{
    for (m_entered = 0; m_entered < count;) {
        EventState* event = events[m_entered]->share();
        if (event == nullptr) {
            if (m_sleeper.Release(ThreadSleeper::kGone)) {
                return eW_Failed; // no memory
            }
            break; // but an event has let it through meanwhile
        }
        SEventWait& place = m_places[m_entered];
        place.waiter = this;
        place.index = static_cast<std::uint32_t>(m_entered);
        place.event = event;
        event->AddUse();
        ++m_entered;
        const EEnter enter = event->Enter(place);
        if (enter == eE_Taken) {
            return eW_Signaled;
        }
        if (enter == eE_Late) {
            break;
        }
    }
    return m_sleeper.Sleep(deadline);
}

void EventWaiter::leaveAll() noexcept
{
    for (; m_entered > 0; --m_entered) {
        SEventWait& place = m_places[m_entered - 1];
        place.event->Leave(place);
        place.event->ReleaseUse();
    }
}

} // namespace platform
