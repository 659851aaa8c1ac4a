#pragma once

#include "groundwork/tuarray.h"
#include "groundwork/tucriticalsection.h"
#include "groundwork/tuevent.h"
#include "groundwork/tulist.h"
#include "groundwork/tureferencecounted.h"
#include "groundwork/tusmartpointer.h"
#include "tabase/tamessagetrace.h"
#include "tabase/tasendnotification.h"

#include <atomic>
#include <cstdint>

class TaMessage;
class TaMessageHandlerBase;
class TaMessageSubscription;
class TaSendStatusPool;

/// One send in flight: who sends, whose answers are still expected, what they answered, and which
/// handlers the sending thread has to run itself.
///
/// The sender sleeps on one event, which is set when there are handlers to run, and when nothing is
/// expected any more. So it is woken once by a send that others answer.
///
///     send:    queue the notification for the dispatcher
///              repeat:  wait for the event, and reset it
///                       run each handler in the list, after what was posted to it before
///              until    nothing is expected, and the list is empty
///     sort:    expect an answer per subscriber, before any of them can give it
///              a subscriber of the sending thread: into the list; another: into its queue
///              expect one answer less, which was that of the sorting itself
///     answer:  note the result, expect one answer less; the last one sets the event
///
/// Ownership: of the notifications in its list. Uses are counted (TaSendStatusUse); after the last
///            one it returns to the pool, so that a late answer never meets another send.
/// Threads:   Begin, RunList and GetResults are for the sender; the rest for any thread.
/// Failure:   Expect and AddToRun throw TuExceptionOutOfMemory; nothing has changed then.
class TABASE_API TaThreadSendStatus : public TuReferenceCounted
{
public:
    TaThreadSendStatus();
    ~TaThreadSendStatus() override;

    /// Makes it ready for a send of the calling thread. What it expects first is the sorting.
    void Begin(const TaMessage& message, SMessageSource source);
    unsigned int GetThreadID() const { return m_threadId; }
    /// Set while there is something to do.
    TuEvent& GetEvent() { return m_event; }
    /// Runs the handlers in the list, those that are added meanwhile, too.
    void RunList();
    /// In the order in which the handlers finished.
    const TuList<long long>& GetResults() const TU_NO_THREAD_SAFETY_ANALYSIS { return m_results; }

    /// Expects an answer; returns by which number it is to be given.
    unsigned int Expect(const TaMessageHandlerBase& handler, unsigned int threadId);
    /// Gives an answer, or where `result` is null takes it back: it will not come. Does nothing
    /// where that was done before.
    void Answer(unsigned int number, const long long* result) noexcept;
    /// Finds the next answer that is expected of the handler, from `number` on.
    bool FindExpected(const TaMessageHandlerBase& handler, unsigned int& number);
    /// Hands the notification, of this send or another, to the sending thread.
    void AddToRun(TaMessageHandlerBase& handler, TaSendNotification&& notification);

private:
    friend class TaSendsInFlight;
    friend class TaSendStatusPool;
    friend class TaSendStatusUse;

    struct SExpected
    {
        const TaMessageHandlerBase* handler; // null: it has answered
        unsigned int threadId; // where it runs
    };
    struct SToRun
    {
        TaMessageHandlerBase* handler;
        std::uint64_t ticket; // no two entries have the same
        TaSendNotification notification;
    };

    bool isDone() const TU_REQUIRES(m_lock) { return m_expected == 0 && m_toRun.IsEmpty(); }
    void clear() noexcept;

    unsigned int m_threadId = 0;
    const TaMessage* m_message = nullptr; // lives until the sender returns
    SMessageSource m_source;
    TuEvent m_event{ true };
    TuCriticalSection m_lock;
    unsigned int m_expected TU_GUARDED_BY(m_lock) = 0; // answers, and the sorting
    TuArray<SExpected> m_answers TU_GUARDED_BY(m_lock);
    TuList<long long> m_results TU_GUARDED_BY(m_lock);
    TuList<SToRun> m_toRun TU_GUARDED_BY(m_lock);
    std::uint64_t m_lastTicket TU_GUARDED_BY(m_lock) = 0;

    std::atomic<unsigned int> m_uses{ 0 };
    TuSmartPointer<TaSendStatusPool> m_pool; // while it is in use

    // Guarded by the lock of TaSendsInFlight.
    TaThreadSendStatus* m_previous = nullptr;
    TaThreadSendStatus* m_next = nullptr;
    TaThreadSendStatus* m_nextToVisit = nullptr;
    std::uint64_t m_visit = 0;
};
