#include "tabase/tamessageworkflowaction.h"

TU_DEFINE_RTTI(TaMessageWorkflowAction, TaMessage, nullptr, nullptr);

bool TaMessageWorkflowAction::operator!=(const TaMessageWorkflowAction& other) const
{
    return !(*this == other);
}
