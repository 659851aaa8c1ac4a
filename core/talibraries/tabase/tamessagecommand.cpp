#include "tabase/tamessagecommand.h"

#include "platform/platformwindow.h"

TU_DEFINE_RTTI(TaMessageCommand, TaMessageWindows, nullptr, &TaMessageCommand::CloneByFactory);

TaMessageCommand::TaMessageCommand(unsigned long long commandId)
    : TaMessageWindows(platform::eWM_Command, commandId, 0)
{
}

IObject* TaMessageCommand::CloneByFactory(const IObject& message)
{
    return new TaMessageCommand(dynamic_cast<const TaMessageCommand&>(message));
}
