#pragma once

#include "tabase/tamessage.h"

class TaMessageHandler;

/// Asks the handler that receives it to make the window of another handler, on its own thread.
///
/// Ownership: the handler that is named outlives the message.
class TABASE_API TaMessageCreateHWND : public TaMessage
{
    TU_DECLARE_RTTI

public:
    explicit TaMessageCreateHWND(TaMessageHandler& handler)
        : m_handler(&handler)
    {
    }

    /// The one whose window is to be made.
    TaMessageHandler& GetHandler() const { return *m_handler; }

private:
    TaMessageHandler* m_handler;
};
