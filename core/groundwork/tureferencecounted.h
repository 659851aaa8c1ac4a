#pragma once

#include "groundwork/ireferencecounted.h"

/// The usual base of shared objects: it has the counter.
///
/// Ownership: an object starts without references and belongs to the first TuSmartPointer made from
///            it; the last one deletes it. Never make one from `this` inside a constructor: when
///            that pointer goes, it deletes the half-built object. The same holds for objects on
///            the stack.
/// Threads:   counting is safe on any thread; the rest of the object is the class's own affair.
class GROUNDWORK_API TuReferenceCounted : public virtual IReferenceCounted
{
public:
    TuReferenceCounted() = default;
    /// A copy is another object: it starts with no references, strong or weak.
    TuReferenceCounted(const TuReferenceCounted& other) noexcept
        : IReferenceCounted(other)
    {
    }
    /// References stay with the objects that they refer to.
    TuReferenceCounted& operator=(const TuReferenceCounted&) noexcept { return *this; }
    ~TuReferenceCounted() override = default;

    /// Final, so that a smart pointer counts without a virtual call.
    const TuReferenceCounter<unsigned int>& getReferenceCounter() const final { return m_counter; }

private:
    TuReferenceCounter<unsigned int> m_counter;
};
