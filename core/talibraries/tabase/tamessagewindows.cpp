#include "tabase/tamessagewindows.h"

#include "groundwork/tustreamwriteascii.h"

TU_DEFINE_RTTI(
    TaMessageWindows, TaMessageWorkflowAction, nullptr, &TaMessageWindows::CloneByFactory);

IObject* TaMessageWindows::CloneByFactory(const IObject& message)
{
    return new TaMessageWindows(dynamic_cast<const TaMessageWindows&>(message));
}

void TaMessageWindows::Dump(TuStreamWriteASCII& stream) const
{
    TaMessage::Dump(stream);
    stream << u" (Message " << GetMessageID() << u" [" << GetWParam() << u", " << GetLParam()
           << u"])";
}

bool TaMessageWindows::operator==(const TaMessageWorkflowAction& other) const
{
    if (!other.IsKindOf(RTTI)) {
        return false;
    }
    const auto& message = dynamic_cast<const TaMessageWindows&>(other);
    return m_messageId == message.m_messageId && m_wParam == message.m_wParam
        && m_lParam == message.m_lParam;
}
