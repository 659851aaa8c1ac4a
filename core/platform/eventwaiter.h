#pragma once

#include "platform/eventstate.h"
#include "platform/platformevent.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace platform {

/// What a thread sleeps with when it waits for events; each thread makes its own at its first wait.
///
/// It lies on the heap, not on the stack, because a thread may be killed in its sleep: what is then
/// left in the lists of events must stay. The waiter of such a thread is abandoned: events pass
/// over it, and it is kept for ever.
class EventWaiter
{
public:
    /// The calling thread's; null without memory.
    static EventWaiter* GetCurrent() noexcept;
    /// Tells the calling thread where to note its waiter, for whoever may kill it; such a thread
    /// says itself when it ends.
    static void NoteIn(std::atomic<EventWaiter*>& place) noexcept;
    static void EndOfThread() noexcept;
    static void Abandon(EventWaiter& waiter) noexcept;

    [[nodiscard]] EWait Wait(const Event* const* events, std::size_t count, std::uint64_t deadline,
        std::size_t& index) noexcept;

    /// Lets the waiter through for event `index` of its call, unless it is through already. From
    /// then on the waiter is not to be touched, but for waking it.
    [[nodiscard]] bool Release(std::uint32_t index) noexcept;
    const std::atomic<std::uint32_t>& GetWord() const { return m_word; }

private:
    static constexpr std::uint32_t kAsleep = 0;
    static constexpr std::uint32_t kGone = 0xFFFFFFFFu; // has given up, or was killed
    static constexpr std::size_t kOwnPlaces = 4;

    [[nodiscard]] bool makePlaces(std::size_t count) noexcept;
    [[nodiscard]] bool enterAll(const Event* const* events, std::size_t count) noexcept;
    void leaveAll() noexcept;
    EWait sleep(std::uint64_t deadline) noexcept;

    /// kAsleep, kGone, or one more than the index of the event that let the waiter through.
    std::atomic<std::uint32_t> m_word{ kGone };
    SEventWait m_ownPlaces[kOwnPlaces];
    std::unique_ptr<SEventWait[]> m_morePlaces; // kept for the next wait
    std::size_t m_moreCount = 0;
    SEventWait* m_places = m_ownPlaces; // of the wait at hand
    std::size_t m_entered = 0; // how many of them are in use
    EventWaiter* m_nextAbandoned = nullptr;
};

} // namespace platform
