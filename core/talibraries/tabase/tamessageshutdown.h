#pragma once

#include "tabase/tamessage.h"

/// Ends the dispatcher's loop, where it is sent to the dispatcher privately: what
/// TaMessageDispatcher::ShutdownAndWait does.
class TABASE_API TaMessageShutDown : public TaMessage
{
    TU_DECLARE_RTTI
};
