#pragma once

#include "tabase/tamessagewindows.h"

/// A command of a menu or a button, by its number. It equals the raw window message of that
/// command; handlers may subscribe to the number.
class TABASE_API TaMessageCommand : public TaMessageWindows
{
    TU_DECLARE_RTTI

public:
    explicit TaMessageCommand(unsigned long long commandId);

private:
    static IObject* CloneByFactory(const IObject& message);
};
