#include "tabase/tasendsinflight.h"

#include "groundwork/tustreamwriteascii.h"
#include "tabase/tamessagehandlerbase.h"
#include "tabase/tamessagesubscription.h"

#include <optional>

namespace {

/// Drops the entries for which `isMeant` is true, outside of the lock: they may belong to other
/// sends.
template <class List, class Predicate>
void dropFrom(List& list, TuCriticalSection& lock, Predicate isMeant)
{
    std::optional<TaSendNotification> dropped;
    do {
        dropped.reset();
        const TuCriticalSectionAuto guard(lock);
        for (auto entry = list.begin(); entry != list.end(); ++entry) {
            if (isMeant(*entry)) {
                dropped.emplace(std::move(entry->notification));
                list.Erase(entry);
                break;
            }
        }
    } while (dropped.has_value());
}

} // namespace

void TaSendsInFlight::Enter(TaThreadSendStatus& status) noexcept
{
    const TuCriticalSectionAuto guard(m_lock);
    status.m_previous = m_last;
    status.m_next = nullptr;
    (m_last != nullptr ? m_last->m_next : m_first) = &status;
    m_last = &status;
}

bool TaSendsInFlight::TryLeave(TaThreadSendStatus& status) noexcept
{
    const TuCriticalSectionAuto guard(m_lock);
    {
        const TuCriticalSectionAuto statusGuard(status.m_lock);
        if (!status.isDone()) {
            return false;
        }
    }
    (status.m_previous != nullptr ? status.m_previous->m_next : m_first) = status.m_next;
    (status.m_next != nullptr ? status.m_next->m_previous : m_last) = status.m_previous;
    return true;
}

bool TaSendsInFlight::HandOver(
    TaMessageHandlerBase& handler, unsigned int threadId, TaSendNotification& notification)
{
    const TuCriticalSectionAuto guard(m_lock);
    TaThreadSendStatus* const innermost = findInnermost(threadId);
    if (innermost == nullptr || !isWaitingFor(threadId, notification.GetStatus().m_threadId)
        || !handler.canBeReached()) { // a thread that has ended left its number to that one
        return false;
    }
    innermost->AddToRun(handler, std::move(notification));
    innermost->m_event.Set();
    return true;
}

TaThreadSendStatus* TaSendsInFlight::findInnermost(unsigned int threadId) const
{
    TaThreadSendStatus* status = m_last;
    while (status != nullptr && status->m_threadId != threadId) {
        status = status->m_previous;
    }
    return status;
}

/// Puts those of the thread's sends that this walk has not seen before the list `toVisit`.
void TaSendsInFlight::visitSendsOf(unsigned int threadId, TaThreadSendStatus*& toVisit)
{
    for (TaThreadSendStatus* status = m_first; status != nullptr; status = status->m_next) {
        if (status->m_threadId == threadId && status->m_visit != m_visits) {
            status->m_visit = m_visits;
            status->m_nextToVisit = toVisit;
            toVisit = status;
        }
    }
}

/// All sends of a thread count, the outer ones, too: it returns to them.
bool TaSendsInFlight::isWaitingFor(unsigned int waiter, unsigned int thread) noexcept
{
    ++m_visits;
    TaThreadSendStatus* toVisit = nullptr;
    visitSendsOf(waiter, toVisit);
    while (toVisit != nullptr) {
        TaThreadSendStatus& status = *toVisit;
        toVisit = status.m_nextToVisit;
        const TuCriticalSectionAuto statusGuard(status.m_lock);
        for (const auto& [handler, threadId] : status.m_answers) {
            if (handler == nullptr) {
                continue;
            }
            if (threadId == thread) {
                return true;
            }
            visitSendsOf(threadId, toVisit);
        }
    }
    return false;
}

void TaSendsInFlight::Forget(
    const TaMessageHandlerBase& handler) noexcept TU_NO_THREAD_SAFETY_ANALYSIS
{
    const TuCriticalSectionAuto guard(m_lock);
    for (TaThreadSendStatus* status = m_first; status != nullptr; status = status->m_next) {
        dropFrom(status->m_toRun, status->m_lock,
            [&](const auto& entry) { return entry.handler == &handler; });
        // Also what the handler was about to answer when its thread was killed.
        for (unsigned int number = 0; status->FindExpected(handler, number);) {
            status->Answer(number, nullptr);
        }
    }
}

void TaSendsInFlight::Invalidate(const TaMessageHandlerBase& handler,
    const TaMessageSubscription& subscription) noexcept TU_NO_THREAD_SAFETY_ANALYSIS
{
    const TuCriticalSectionAuto guard(m_lock);
    for (TaThreadSendStatus* status = m_first; status != nullptr; status = status->m_next) {
        dropFrom(status->m_toRun, status->m_lock, [&](const auto& entry) {
            return entry.handler == &handler
                && subscription.IsInvalidating(entry.notification.GetMessage());
        });
    }
}

void TaSendsInFlight::Dump(TuStreamWriteASCII& stream) const
{
    const TuCriticalSectionAuto guard(m_lock);
    for (TaThreadSendStatus* status = m_first; status != nullptr; status = status->m_next) {
        const TuCriticalSectionAuto statusGuard(status->m_lock);
        stream << u"  thread " << status->m_threadId << u" sends ";
        status->m_message->Dump(stream);
        if (status->m_source.file != nullptr) {
            stream << u" from " << status->m_source.file << u":" << status->m_source.line;
        }
        stream << u"\n";
        for (const auto& [handler, threadId] : status->m_answers) {
            if (handler != nullptr) {
                stream << u"    waits for '" << handler->getOwnName() << u"' on thread " << threadId
                       << u"\n";
            }
        }
        if (status->m_toRun.GetCount() != 0) {
            stream << u"    has to run " << status->m_toRun.GetCount()
                   << u" notifications itself\n";
        }
    }
}
