#pragma once

#include "groundwork/iextensioninterface.h"
#include "groundwork/ireferencecounted.h"

/// A shared object that can be asked for extension interfaces by name.
class GROUNDWORK_API IExtendable : public virtual IExtensionInterface,
                                   public virtual IReferenceCounted
{
};
