#pragma once

#include "groundwork/tusmartpointer.h"
#include "tabase/tamessage.h"
#include "tabase/tamessagetrace.h"

#include <cstdint>
#include <utility>

#include "platform/platformmacrospush.h"

class TaMessageHandlerBase;

/// A message that was posted, on its way to the dispatcher, and then to one subscriber.
///
/// Ownership: shares the message.
/// Threads:   one at a time.
class TaPostNotification
{
public:
    TaPostNotification(const TaMessageHandlerBase* target, TuSmartPointer<const TaMessage> message,
        SMessageSource source) noexcept
        : m_target(target)
        , m_message(std::move(message))
        , m_source(source)
    {
    }

    /// Null where it goes to all subscribers.
    const TaMessageHandlerBase* GetTarget() const { return m_target; }
    const TaMessage& GetMessage() const { return *m_message; }
    PLATFORM_RENAMED(const TaMessage&, GetMessage, (), const, ())
    const TuSmartPointer<const TaMessage>& GetSharedMessage() const { return m_message; }
    SMessageSource GetSource() const { return m_source; }
    /// Its place among all that waits for the handler.
    std::uint64_t GetTicket() const { return m_ticket; }
    /// The message will be looked at soon; most come from other threads.
    void Prefetch() const { __builtin_prefetch(m_message.Get()); }

private:
    friend class TaMessageHandlerBase;

    const TaMessageHandlerBase* m_target; // compared, never used: it may be gone
    TuSmartPointer<const TaMessage> m_message;
    SMessageSource m_source;
    std::uint64_t m_ticket = 0;
};

#include "platform/platformmacrospop.h"
