#pragma once

#include "tabase/tabaseapi.h"

/// What an application framework throws by pointer, and expects to be deleted by whoever catches
/// it: the stand-in where that framework is absent. New code throws a TuException.
///
/// Ownership: of the one who catches the pointer.
class TABASE_API CException
{
public:
    CException() = default;
    CException(const CException&) = delete;
    CException& operator=(const CException&) = delete;
    virtual ~CException();
};
