#include "tabase/tamessagestring.h"

TU_DEFINE_RTTI(TaMessageString, TaMessage, nullptr, &TaMessageString::CloneByFactory);

IObject* TaMessageString::CloneByFactory(const IObject& message)
{
    return new TaMessageString(dynamic_cast<const TaMessageString&>(message));
}
