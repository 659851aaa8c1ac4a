#pragma once

#include "groundwork/iobject.h"

/// Throws TuExceptionPreconditionViolation, which names both classes.
[[noreturn]] GROUNDWORK_API void TuThrowWrongClass(const IObject& object, const TuRTTI& expected);

/// The object as a T, as clone functions need it: they are handed any object.
/// Throws TuExceptionPreconditionViolation where it is none.
template <class T> const T& TuCheckedCast(const IObject& object)
{
    const T* const cast = dynamic_cast<const T*>(&object);
    if (cast == nullptr) {
        TuThrowWrongClass(object, T::RTTI);
    }
    return *cast;
}
