#pragma once

#include "groundwork/tureferencecounter.h"

/// The interface of objects that share ownership through TuSmartPointer. The usual implementation
/// is TuReferenceCounted; a class that cannot derive from it holds a counter of its own and answers
/// it.
class GROUNDWORK_API IReferenceCounted
{
public:
    virtual ~IReferenceCounted() = default;
    virtual const TuReferenceCounter<unsigned int>& getReferenceCounter() const = 0;

protected:
    IReferenceCounted() = default;
    IReferenceCounted(const IReferenceCounted&) = default;
    IReferenceCounted& operator=(const IReferenceCounted&) = default;
};
