#pragma once

#include "tabase/tamessage.h"

class TaMessageHandlerBase;

/// A handler's wish to receive certain messages, or not to any more. It is sent to the dispatcher
/// privately: what the subscribing operations of handlers do.
///
/// Ownership: handler and type outlive the message.
class TABASE_API TaMessageSubscription : public TaMessage
{
    TU_DECLARE_RTTI

public:
    enum EAction
    {
        eA_SubscribeType = 0, // and all types that derive from it
        eA_SubscribeCommand = 1, // the commands of one number
        eA_UnsubscribeType = 2,
        eA_UnsubscribeCommand = 3,
        eA_UnsubscribeAll = 4, // also forgets the handler's name
    };

    /// For the actions on types.
    TaMessageSubscription(TaMessageHandlerBase& handler, EAction action, const TuRTTI& type)
        : TaMessageSubscription(handler, action, &type, 0)
    {
    }
    /// For the actions on commands.
    TaMessageSubscription(
        TaMessageHandlerBase& handler, EAction action, unsigned long long commandId)
        : TaMessageSubscription(handler, action, nullptr, commandId)
    {
    }
    /// To unsubscribe from all.
    explicit TaMessageSubscription(TaMessageHandlerBase& handler)
        : TaMessageSubscription(handler, eA_UnsubscribeAll, nullptr, 0)
    {
    }

    TaMessageHandlerBase& GetHandler() const { return *m_handler; }
    EAction GetAction() const { return m_action; }
    /// Null for the other actions.
    const TuRTTI* GetType() const { return m_type; }
    unsigned long long GetCommandID() const { return m_commandId; }

    /// Whether the handler does not want `message` any more, though it may be waiting already: all
    /// messages of a type that it has unsubscribed from, and of types that derive from it, even
    /// where another subscription of the handler matches them, too.
    bool IsInvalidating(const TaMessage& message) const;

private:
    TaMessageSubscription(TaMessageHandlerBase& handler, EAction action, const TuRTTI* type,
        unsigned long long commandId)
        : m_handler(&handler)
        , m_action(action)
        , m_type(type)
        , m_commandId(commandId)
    {
    }

    TaMessageHandlerBase* m_handler;
    EAction m_action;
    const TuRTTI* m_type;
    unsigned long long m_commandId;
};
