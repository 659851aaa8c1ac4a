#pragma once

#include "groundwork/cstring.h"

class TuStreamWriteASCII;

/// A mix-in for objects that can give a readable account of themselves.
///
/// The text comes from the class's dump(); it is meant for people and logs, not for reading back.
/// Dump() without a stream writes it to the default log, TuStreamWriteASCIITrace. In a separated
/// stream an account stands on lines of its own.
template <int N> class GROUNDWORK_TEMPLATE TuIDumpable
{
public:
    virtual ~TuIDumpable() = default;

    void Dump() const;
    void Dump(TuStreamWriteASCII& stream) const;
    CString ToString() const;

protected:
    TuIDumpable() = default;
    TuIDumpable(const TuIDumpable&) = default;
    TuIDumpable& operator=(const TuIDumpable&) = default;

    virtual void dump(TuStreamWriteASCII& stream) const = 0;
};

extern template class GROUNDWORK_API TuIDumpable<1>;
