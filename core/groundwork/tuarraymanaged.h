#pragma once

#include "groundwork/tuarray.h"

/// The array of objects with a life of their own: texts, smart pointers, records of these. Each
/// element is constructed, moved and destroyed by itself, whatever its class looks like to the
/// compiler. Interfaces that give out several objects take one by reference and fill it:
///
///     TuArrayManaged<CString> keys;
///     parameters.GetKeys(keys);
///
/// A plain TuArray treats such elements the same; it differs for elements that are bytes only,
/// which it moves in one go. Ownership, threads and failure are those of TuArray.
template <class T> class TuArrayManaged : public TuArray<T, TuArrayPolicyConstructManaged>
{
    using Base = TuArray<T, TuArrayPolicyConstructManaged>;

public:
    using Base::Base;
    TuArrayManaged() = default;
};
