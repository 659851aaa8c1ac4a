#pragma once

#include "groundwork/tucriticalsection.h"
#include "tabase/tathreadsendstatus.h"

#include <cstdint>

class TuStreamWriteASCII;

/// All sends whose senders still wait: who waits for whom.
///
/// A thread waits for the threads of the handlers whose answers its sends expect. Only the
/// dispatcher makes it wait for one more, when it sorts a message. So a ring of threads that wait
/// for each other is closed by the last subscriber that is sorted in; and that one's thread is in
/// the ring, so it sleeps in a send of its own. HandOver finds this and gives that thread the
/// notification, to be run inside its wait.
///
/// Ownership: of nothing; a status is here between Enter and TryLeave of its sender.
/// Threads:   any thread may call any member.
class TABASE_API TaSendsInFlight
{
public:
    void Enter(TaThreadSendStatus& status) noexcept;
    /// False where the sender has something left to do or to wait for.
    [[nodiscard]] bool TryLeave(TaThreadSendStatus& status) noexcept;

    /// Where the thread of `handler` waits, by any number of threads, for the one that sends: gives
    /// the notification to its innermost send, and returns true. Throws TuExceptionOutOfMemory.
    [[nodiscard]] bool HandOver(
        TaMessageHandlerBase& handler, unsigned int threadId, TaSendNotification& notification);

    /// Nobody is to expect an answer of the handler any more, nor to run it.
    void Forget(const TaMessageHandlerBase& handler) noexcept;
    /// Takes from the senders' lists what the handler does not want any more.
    void Invalidate(
        const TaMessageHandlerBase& handler, const TaMessageSubscription& subscription) noexcept;

    /// A line per send and one per answer that it waits for.
    void Dump(TuStreamWriteASCII& stream) const;

private:
    bool isWaitingFor(unsigned int waiter, unsigned int thread) noexcept TU_REQUIRES(m_lock);
    void visitSendsOf(unsigned int threadId, TaThreadSendStatus*& toVisit) TU_REQUIRES(m_lock);
    TaThreadSendStatus* findInnermost(unsigned int threadId) const TU_REQUIRES(m_lock);

    mutable TuCriticalSection m_lock;
    TaThreadSendStatus* m_first TU_GUARDED_BY(m_lock) = nullptr; // who has come first
    TaThreadSendStatus* m_last TU_GUARDED_BY(m_lock) = nullptr;
    std::uint64_t m_visits TU_GUARDED_BY(m_lock) = 0;
};
