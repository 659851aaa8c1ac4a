#pragma once

#include "groundwork/tustreamreadbinarybase.h"

#include <cstring>
#include <type_traits>

class ISerializable;

/// The binary reader: the mirror of TuStreamWriteBinary.
///
/// Everything ends in read(), the one operation that a concrete stream supplies. A stream with a
/// buffer lends its unread part out as the window (setWindow), where numbers are taken without a
/// call.
///
/// Failure: besides that of TuStreamRead: a bool that is neither 0 nor 1 is malformed. A count
///          never makes the reader take more memory than a small multiple of the bytes that arrive.
class GROUNDWORK_API TuStreamReadBinary : public TuStreamReadBinaryBase
{
    TU_DECLARE_RTTI

public:
    /// The operators of TuStreamRead for a stream that is known to be binary: a number that the
    /// window holds needs no call, all else goes to the virtual operator.
    template <class T>
    requires requires(TuStreamRead& base, T& target) { base.operator>>(target); }
    friend TuStreamReadBinary& operator>>(TuStreamReadBinary& stream, T& value)
    {
        if constexpr (std::is_arithmetic_v<T>) {
            if (stream.takeFromWindow(value)) {
                return stream;
            }
        }
        static_cast<TuStreamRead&>(stream) >> value;
        return stream;
    }

    /// As a signed char. Only here: as text, a char could be a digit or a letter.
    friend TuStreamReadBinary& operator>>(TuStreamReadBinary& stream, char& value)
    {
        signed char number = 0;
        stream >> number;
        value = static_cast<char>(number);
        return stream;
    }

    /// As TuStreamRead's; here it needs no call.
    unsigned int ReadAndCompareVersion(unsigned int highestKnown)
    {
        unsigned int version = 0;
        *this >> version;
        if (version > highestKnown) {
            throwNewerVersion(version, highestKnown);
        }
        return version;
    }
    /// Reads raw bytes; returns how many there were, fewer than `size` only at the end.
    unsigned long long ReadBuffer(void* data, unsigned long long size)
    {
        const unsigned char* window = getWindow();
        if (size <= static_cast<unsigned long long>(getWindowEnd() - window)) {
            if (size != 0) {
                std::memcpy(data, window, static_cast<std::size_t>(size));
                setWindow(window + size, getWindowEnd());
            }
            return size;
        }
        return read(data, size);
    }
    /// Reads `size` raw bytes, or throws TuExceptionStream.
    void ReadExactly(void* data, unsigned long long size)
    {
        if (size <= static_cast<unsigned long long>(getWindowEnd() - getWindow())) {
            ReadBuffer(data, size);
        } else {
            readExactly(data, size);
        }
    }
    /// Makes the object that WriteChunk wrote, and lets it read itself. The caller owns it.
    /// Throws TuException for a class that is unknown, or cannot be created or serialized; what the
    /// object's Serialize throws passes on. Nothing is left behind then.
    ISerializable* ReadChunk();
};
