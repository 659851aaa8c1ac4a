#pragma once

#include "platform/platformlock.h"

#include <atomic>
#include <cstdint>

namespace platform {

class EventWaiter;
class EventState;

/// A place in the list of those who sleep on one event.
struct SEventWait
{
    EventWaiter* waiter = nullptr;
    std::uint32_t index = 0; // of the event, in the call that waits
    EventState* event = nullptr; // a counted use
    bool listed = false; // this and the next two are guarded by the event's lock
    SEventWait* previous = nullptr;
    SEventWait* next = nullptr;
};

enum EEnter
{
    eE_Listed,
    eE_Taken, // the flag was set, and is the waiter's
    eE_Late, // it was set, but another event has let the waiter through before
};

/// What the copies of an event, and those who sleep on it, share.
///
/// Ownership: counted; made with one use.
/// Threads:   all operations may run on any thread at once.
class EventState
{
public:
    EventState(bool manual, bool set)
        : m_manual(manual)
        , m_set(set)
    {
    }
    void AddUse() noexcept { m_uses.fetch_add(1, std::memory_order_relaxed); }
    void ReleaseUse() noexcept;

    void Set() noexcept;
    void Reset() noexcept;
    bool TryTake() noexcept;

    /// Takes the flag for the waiter of `place`, which is the calling thread's, where it is set;
    /// else puts the place into the list.
    EEnter Enter(SEventWait& place) noexcept;
    /// Takes the place out of the list, where it is still there.
    void Leave(SEventWait& place) noexcept;

private:
    ~EventState() = default;
    void setManual() noexcept;
    void setAutomatic() noexcept;
    void unlist(SEventWait& place) noexcept TU_REQUIRES(m_lock);

    CriticalSection m_lock; // guards the list, and changes of the flag
    SEventWait* m_first TU_GUARDED_BY(m_lock) = nullptr; // who has slept longest
    SEventWait* m_last TU_GUARDED_BY(m_lock) = nullptr;
    std::atomic<std::uint32_t> m_uses{ 1 };
    const bool m_manual;
    std::atomic<bool> m_set;
};

} // namespace platform
