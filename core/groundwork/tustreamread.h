#pragma once

#include "groundwork/cstring.h"
#include "groundwork/iobject.h"

#include <type_traits>

/// The abstract reader: the mirror of TuStreamWrite.
///
/// Threads: one thread at a time.
/// Failure: TuExceptionStream when the stream ends early or holds something else than was asked
///          for; the target is then unchanged.
class GROUNDWORK_API TuStreamRead : public virtual IObject
{
    TU_DECLARE_RTTI

public:
    virtual TuStreamRead& operator>>(bool& value) = 0;
    virtual TuStreamRead& operator>>(signed char& value) = 0;
    virtual TuStreamRead& operator>>(unsigned char& value) = 0;
    virtual TuStreamRead& operator>>(short& value) = 0;
    virtual TuStreamRead& operator>>(unsigned short& value) = 0;
    virtual TuStreamRead& operator>>(int& value) = 0;
    virtual TuStreamRead& operator>>(unsigned int& value) = 0;
    virtual TuStreamRead& operator>>(long long& value) = 0;
    virtual TuStreamRead& operator>>(unsigned long long& value) = 0;
    virtual TuStreamRead& operator>>(float& value) = 0;
    virtual TuStreamRead& operator>>(double& value) = 0;
    virtual TuStreamRead& operator>>(CStringA& text) = 0;
    virtual TuStreamRead& operator>>(CString& text) = 0;

    TuStreamRead& operator>>(long& value)
    {
        std::conditional_t<sizeof(long) == sizeof(int), int, long long> fixed = 0;
        *this >> fixed;
        value = static_cast<long>(fixed);
        return *this;
    }
    TuStreamRead& operator>>(unsigned long& value)
    {
        std::conditional_t<sizeof(long) == sizeof(int), unsigned int, unsigned long long> fixed = 0;
        *this >> fixed;
        value = static_cast<unsigned long>(fixed);
        return *this;
    }

    /// Reads what WriteVersion wrote and returns it.
    /// Throws TuExceptionWrongFileVersion when it is greater than `highestKnown`.
    unsigned int ReadAndCompareVersion(unsigned int highestKnown);

protected:
    TuStreamRead() = default;
    TuStreamRead(const TuStreamRead&) = default;
    TuStreamRead& operator=(const TuStreamRead&) = default;

    [[noreturn]] static void throwNewerVersion(unsigned int version, unsigned int highestKnown);
};
