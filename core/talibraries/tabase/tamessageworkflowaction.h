#pragma once

#include "tabase/tamessage.h"

/// The base of what a user does: messages that are compared by their values.
class TABASE_API TaMessageWorkflowAction : public TaMessage
{
    TU_DECLARE_RTTI

public:
    // Both comparisons stay in sight: which one is meant follows from the type of the argument.
    using TaMessage::operator==;
    virtual bool operator==(const TaMessageWorkflowAction& other) const = 0;
    virtual bool operator!=(const TaMessageWorkflowAction& other) const;
};
