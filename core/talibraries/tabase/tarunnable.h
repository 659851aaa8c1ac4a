#pragma once

#include "groundwork/iobject.h"
#include "groundwork/tureferencecounted.h"
#include "tabase/tabaseapi.h"

/// A piece of work that a TaMessageRunnable carries to a handler, which runs it.
///
/// Ownership: counted.
class TABASE_API TaRunnable : public TuReferenceCounted, public virtual IObject
{
    TU_DECLARE_RTTI

public:
    ~TaRunnable() override;

    virtual void Run() = 0;
};
