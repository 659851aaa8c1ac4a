#pragma once

#include "groundwork/tuexception.h"
#include "groundwork/tusmartpointer.h"
#include "tabase/tabaseapi.h"

/// The form in which an algorithm keeps a failure that was no TuException: a standard exception,
/// whose text it has, or anything else.
class TABASE_API TaExceptionContainer : public TuException
{
    TU_DECLARE_RTTI

public:
    TaExceptionContainer(const CString& file, unsigned int line);
    TaExceptionContainer(const CString& file, unsigned int line, const CString& message);

    /// What is kept in the place of a failure where there is no memory to keep that: made while the
    /// library is loaded.
    static const TuSmartPointer<const TuException>& GetReserve();

private:
    static IObject* CloneByFactory(const IObject& object);
};
