#pragma once

#include "groundwork/tustreamwritebinarybase.h"

#include <type_traits>

class ISerializable;

/// The binary writer: little-endian, fixed widths, floats by their bits, a bool as one byte 0 or 1,
/// text as a 32-bit count of units followed by the units. docs/format.md states it byte by byte.
///
/// Everything ends in write(), the one operation that a concrete stream supplies. A stream with a
/// buffer lends its free part out as the window (setWindow), where numbers are stored without a
/// call.
///
/// Failure: besides that of TuStreamWrite: TuExceptionPreconditionViolation for a text of more than
///          2^32 - 1 units.
class GROUNDWORK_API TuStreamWriteBinary : public TuStreamWriteBinaryBase
{
    TU_DECLARE_RTTI

public:
    /// The operators of TuStreamWrite for a stream that is known to be binary: a number that fits
    /// the window needs no call, all else goes to the virtual operator.
    template <class T>
    requires requires(TuStreamWrite& base, const T& source) { base.operator<<(source); }
    friend TuStreamWriteBinary& operator<<(TuStreamWriteBinary& stream, const T& value)
    {
        if constexpr (std::is_arithmetic_v<T>) {
            if (stream.putIntoWindow(value)) {
                return stream;
            }
        }
        static_cast<TuStreamWrite&>(stream) << value;
        return stream;
    }

    /// As TuStreamWrite's; here it needs no call.
    void WriteVersion(unsigned int version) { *this << version; }
    /// Writes `size` raw bytes.
    void WriteBuffer(const void* data, unsigned long long size) { putBytes(data, size); }
    /// Writes an object so that TuStreamReadBinary::ReadChunk can make it again without knowing its
    /// class: version 0, the class name as wide text, what the object's Serialize writes.
    void WriteChunk(const ISerializable& object);
};
