#include "tabase/tathreadsendstatus.h"

#include "platform/platformthread.h"
#include "tabase/tamessagehandlerbase.h"
#include "tabase/tasendstatuspool.h"

#include <exception>
#include <optional>
#include <utility>

TaThreadSendStatus::TaThreadSendStatus() = default;

TaThreadSendStatus::~TaThreadSendStatus() = default;

void TaThreadSendStatus::Begin(const TaMessage& message, SMessageSource source)
{
    const TuCriticalSectionAuto guard(m_lock);
    m_threadId = platform::GetCurrentThreadId();
    m_message = &message;
    m_source = source;
    m_expected = 1;
}

void TaThreadSendStatus::RunList()
{
    for (;;) {
        TaMessageHandlerBase* handler = nullptr;
        std::uint64_t ticket = 0;
        {
            const TuCriticalSectionAuto guard(m_lock);
            if (m_toRun.IsEmpty()) {
                return;
            }
            handler = m_toRun.GetHead().handler;
            ticket = m_toRun.GetHead().ticket;
        }
        // What it does with its posts may end the handler, or its subscription: then the entry is
        // gone afterwards.
        handler->flushPostNotifications();
        std::optional<TaSendNotification> notification;
        {
            const TuCriticalSectionAuto guard(m_lock);
            if (!m_toRun.IsEmpty() && m_toRun.GetHead().ticket == ticket) {
                notification.emplace(m_toRun.RemoveHead().notification);
            }
        }
        // Or the window has gone: then there is no answer.
        if (notification.has_value() && handler->m_threadId == m_threadId) {
            handler->run(*notification);
        }
    }
}

unsigned int TaThreadSendStatus::Expect(const TaMessageHandlerBase& handler, unsigned int threadId)
{
    const TuCriticalSectionAuto guard(m_lock);
    m_answers.Add({ &handler, threadId });
    ++m_expected;
    return m_answers.GetSize() - 1;
}

void TaThreadSendStatus::Answer(unsigned int number, const long long* result) noexcept
{
    bool wakes = false;
    {
        const TuCriticalSectionAuto guard(m_lock);
        const bool isSorting = number == TaSendNotification::kSorting;
        const TaMessageHandlerBase* handler = nullptr;
        if (!isSorting) {
            handler = std::exchange(m_answers[number].handler, nullptr);
            if (handler == nullptr) {
                return;
            }
        }
        if (result != nullptr || !isSorting) {
            TaMessageTrace::Report(
                result != nullptr ? SMessageTrace::eS_Answered : SMessageTrace::eS_Dropped, true,
                *m_message, m_source, handler != nullptr ? &handler->getOwnName() : nullptr);
        }
        if (result != nullptr) {
            try {
                m_results.Add(*result);
            } catch (const std::exception&) { // no memory: as if nobody had answered
            }
        }
        --m_expected;
        wakes = m_expected == 0 || (isSorting && !m_toRun.IsEmpty());
    }
    if (wakes) {
        m_event.Set();
    }
}

bool TaThreadSendStatus::FindExpected(const TaMessageHandlerBase& handler, unsigned int& number)
{
    const TuCriticalSectionAuto guard(m_lock);
    while (number < m_answers.GetSize() && m_answers[number].handler != &handler) {
        ++number;
    }
    return number < m_answers.GetSize();
}

void TaThreadSendStatus::AddToRun(TaMessageHandlerBase& handler, TaSendNotification&& notification)
{
    TaMessageTrace::Report(SMessageTrace::eS_Queued, true, notification.GetMessage(),
        notification.GetSource(), &handler.getOwnName());
    const TuCriticalSectionAuto guard(m_lock);
    m_toRun.Add({ &handler, ++m_lastTicket, std::move(notification) });
}

void TaThreadSendStatus::clear() noexcept
{
    const TuCriticalSectionAuto guard(m_lock);
    m_message = nullptr;
    m_source = {};
    m_event.Reset();
    m_answers.RemoveAll();
    m_results.RemoveAll();
    m_toRun.RemoveAll();
}
