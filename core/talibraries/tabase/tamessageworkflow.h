#pragma once

#include "tabase/tamessage.h"

#include <cstdint>

#include "platform/platformmacrospush.h"

/// A command to the workflow manager.
class TABASE_API TaMessageWorkflow : public TaMessage
{
    TU_DECLARE_RTTI

public:
    enum EMessage : std::int32_t
    {
        eM_Start = 0,
        eM_StartSleeping = 1,
        eM_Stop = 2,
        eM_Continue = 3,
        eM_Sleep = 4,
        eM_Break = 5,
        eM_Reevaluate = 6,
        eM_Dump = 7,
    };

    explicit TaMessageWorkflow(EMessage message)
        : m_message(message)
    {
    }

    EMessage GetMessage() const { return m_message; }
    PLATFORM_RENAMED(EMessage, GetMessage, (), const, ())

    using TaMessage::Dump;
    void Dump(TuStreamWriteASCII& stream) const override;

private:
    EMessage m_message;
};

#include "platform/platformmacrospop.h"
