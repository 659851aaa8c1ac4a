#pragma once

#include "tabase/tamessagetrace.h"
#include "tabase/tasendstatususe.h"

#include <cstdint>

#include "platform/platformmacrospush.h"

class TaMessage;
class TaMessageHandlerBase;

/// A message that was sent, on its way to the dispatcher, and then to one subscriber; its sender
/// waits.
///
/// It owes the sender one answer. Dropped without one, wherever that happens, it tells him that
/// none will come; so no send waits for a handler that is gone.
///
/// Ownership: moved from place to place, never copied. The message is the sender's, and lives until
///            he has all answers: nobody looks at it after Answer.
/// Threads:   one at a time.
class TABASE_API TaSendNotification
{
public:
    /// For the dispatcher, whose answer is that it has sorted the message.
    TaSendNotification(const TaMessageHandlerBase* target, const TaMessage& message,
        TaSendStatusUse status, SMessageSource source) noexcept;
    /// For a subscriber, whose answer has this number.
    TaSendNotification(const TaSendNotification& sorted, unsigned int answer) noexcept;
    TaSendNotification(TaSendNotification&& other) noexcept = default;
    TaSendNotification& operator=(TaSendNotification&& other) noexcept;
    ~TaSendNotification();

    /// Null where it goes to all subscribers.
    const TaMessageHandlerBase* GetTarget() const { return m_target; }
    const TaMessage& GetMessage() const { return *m_message; }
    PLATFORM_RENAMED(const TaMessage&, GetMessage, (), const, ())
    SMessageSource GetSource() const { return m_source; }
    /// Its place among all that waits for the handler.
    std::uint64_t GetTicket() const { return m_ticket; }
    TaThreadSendStatus& GetStatus() const { return *m_status; }

    /// Only the first answer counts.
    void Answer(long long result) noexcept;
    /// The message will be looked at soon; most come from other threads.
    void Prefetch() const { __builtin_prefetch(m_message); }

private:
    friend class TaMessageHandlerBase;
    friend class TaMessageDispatcher;
    friend class TaThreadSendStatus;

    static constexpr unsigned int kSorting = 0xFFFFFFFFu;

    void drop() noexcept;
    void report(SMessageTrace::EStep step) const noexcept;

    const TaMessageHandlerBase* m_target; // compared, never used: it may be gone
    const TaMessage* m_message;
    TaSendStatusUse m_status; // none: answered, or moved away
    SMessageSource m_source;
    unsigned int m_answer = kSorting;
    std::uint64_t m_ticket = 0;
};

#include "platform/platformmacrospop.h"
