#include "tabase/tamessagesubscription.h"

#include "tabase/tamessagecommand.h"

TU_DEFINE_RTTI(TaMessageSubscription, TaMessage, nullptr, nullptr);

bool TaMessageSubscription::IsInvalidating(const TaMessage& message) const
{
    switch (m_action) {
    case eA_UnsubscribeType:
        return m_type != nullptr && message.IsKindOf(*m_type);
    case eA_UnsubscribeCommand: {
        const auto* const command = dynamic_cast<const TaMessageCommand*>(&message);
        return command != nullptr && command->GetWParam() == m_commandId;
    }
    case eA_UnsubscribeAll:
        return true;
    default:
        return false;
    }
}
