#include "tabase/tasendnotification.h"

#include "tabase/tathreadsendstatus.h"

#include <utility>

TaSendNotification::TaSendNotification(const TaMessageHandlerBase* target, const TaMessage& message,
    TaSendStatusUse status, SMessageSource source) noexcept
    : m_target(target)
    , m_message(&message)
    , m_status(std::move(status))
    , m_source(source)
{
}

TaSendNotification::TaSendNotification(
    const TaSendNotification& sorted, unsigned int answer) noexcept
    : m_target(sorted.m_target)
    , m_message(sorted.m_message)
    , m_status(sorted.m_status)
    , m_source(sorted.m_source)
    , m_answer(answer)
{
}

TaSendNotification& TaSendNotification::operator=(TaSendNotification&& other) noexcept
{
    if (this != &other) {
        drop();
        m_target = other.m_target;
        m_message = other.m_message;
        m_status = std::move(other.m_status);
        m_source = other.m_source;
        m_answer = other.m_answer;
        m_ticket = other.m_ticket;
    }
    return *this;
}

TaSendNotification::~TaSendNotification() { drop(); }

void TaSendNotification::drop() noexcept
{
    if (m_status) {
        const TaSendStatusUse status = std::move(m_status);
        status->Answer(m_answer, nullptr);
    }
}

void TaSendNotification::Answer(long long result) noexcept
{
    if (m_status) {
        const TaSendStatusUse status = std::move(m_status);
        status->Answer(m_answer, &result);
    }
}
