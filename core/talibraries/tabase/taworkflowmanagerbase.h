#pragma once

#include "tabase/tamessage.h"

#include <cstdint>

#include "platform/platformmacrospush.h"

/// The workflow manager's messages to itself, which stand for its state between two transfer
/// functions.
class TABASE_API TaWorkflowManagerBase
{
public:
    class TaMessageWorkflowEndOfTF;
    class TaMessageWorkflowNextMsgBuffered;
};

/// A transfer function has ended.
class TABASE_API TaWorkflowManagerBase::TaMessageWorkflowEndOfTF : public TaMessage
{
    TU_DECLARE_RTTI

public:
    enum EMessage : std::int32_t
    {
        eM_EndOfATF = 0, // an automatic one
        eM_EndOfITF = 1, // an interactive one
        eM_EndOfITFExit = 2, // an interactive one, by leaving it
    };

    explicit TaMessageWorkflowEndOfTF(EMessage message)
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

/// The next of the messages that were put aside is due.
class TABASE_API TaWorkflowManagerBase::TaMessageWorkflowNextMsgBuffered : public TaMessage
{
    TU_DECLARE_RTTI
};

#include "platform/platformmacrospop.h"
