#pragma once

#include "groundwork/groundworkapi.h"
#include "platform/platformevent.h"

struct TuArrayPolicyConstructDefault;
template <class T, class ConstructPolicy> class TuArray;

/// A flag that one thread sets and other threads sleep on.
///
/// A manual-reset event lets every waiter through until Reset clears it; an automatic one lets a
/// single waiter through and clears itself. Use it for one yes-or-no fact ("the thread has ended",
/// "please stop"). To wait for richer state, guard that state with a TuCriticalSection and let the
/// event do nothing but wake its reader.
///
///     TuEvent stop(true);
///     while (stop.Wait(kPollMs) == TuEvent::eWR_TimedOut)
///         DoOneStep();
///
/// An event that nobody has slept on yet, and that has no copies, is one word and owns nothing.
///
/// Ownership: copies share one flag; assignment gives up the former flag and shares the other's. A
///            flag lives until the last copy is gone.
/// Threads:   any thread may call any member, but for assignment and destruction. What a thread
///            wrote before Set is visible to the thread whose Wait that Set released. That thread
///            may destroy the event at once.
/// Failure:   only copying throws, std::bad_alloc.
class GROUNDWORK_API TuEvent
{
public:
    enum EWaitResult
    {
        eWR_TimedOut = platform::eW_TimedOut,
        eWR_Signaled = platform::eW_Signaled,
        eWR_Failed = platform::eW_Failed, // nothing to wait for, no memory, or the system refused
    };

    /// A time-out that never runs out; every other value counts milliseconds.
    static constexpr unsigned int kInfinite = 0xFFFFFFFFu;

    explicit TuEvent(bool manualReset) noexcept
        : m_event(manualReset)
    {
    }

    /// Always true, as is Reset.
    bool Set()
    {
        m_event.Set();
        return true;
    }
    bool Reset()
    {
        m_event.Reset();
        return true;
    }

    /// The same as a wait of zero milliseconds: asking an automatic event takes its flag.
    bool IsSet() const { return Wait(0) == eWR_Signaled; }

    EWaitResult Wait(unsigned int milliseconds) const
    {
        return static_cast<EWaitResult>(m_event.Wait(milliseconds));
    }
    static EWaitResult WaitForSingleEvent(const TuEvent& event, unsigned int milliseconds)
    {
        return event.Wait(milliseconds);
    }
    /// Returns as soon as one of `events` is set; of several that are, the first one counts. There
    /// may be any number of them, and one may stand there twice; no events, or a null one, is a
    /// failure at once. `index`, where it is not null, receives which was set.
    static EWaitResult WaitForMultipleEvents(
        const TuArray<const TuEvent*, TuArrayPolicyConstructDefault>& events,
        unsigned int milliseconds, unsigned int* index = nullptr);
    /// The same for `count` events in a row; up to 64 need no memory.
    static EWaitResult WaitForMultipleEvents(const TuEvent* const* events, unsigned int count,
        unsigned int milliseconds, unsigned int* index = nullptr);

private:
    platform::Event m_event;
};
