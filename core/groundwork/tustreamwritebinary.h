#pragma once

#include "groundwork/tulittleendian.h"
#include "groundwork/tustreamwrite.h"

#include <cstring>

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
class GROUNDWORK_API TuStreamWriteBinary : public TuStreamWrite
{
    TU_DECLARE_RTTI

public:
    using TuStreamWrite::operator<<;
    TuStreamWrite& operator<<(bool value) override { return put<unsigned char>(value ? 1 : 0); }
    TuStreamWrite& operator<<(signed char value) override { return put(value); }
    TuStreamWrite& operator<<(unsigned char value) override { return put(value); }
    TuStreamWrite& operator<<(short value) override { return put(value); }
    TuStreamWrite& operator<<(unsigned short value) override { return put(value); }
    TuStreamWrite& operator<<(int value) override { return put(value); }
    TuStreamWrite& operator<<(unsigned int value) override { return put(value); }
    TuStreamWrite& operator<<(long long value) override { return put(value); }
    TuStreamWrite& operator<<(unsigned long long value) override { return put(value); }
    TuStreamWrite& operator<<(float value) override { return put(value); }
    TuStreamWrite& operator<<(double value) override { return put(value); }
    TuStreamWrite& operator<<(const char* text) override;
    TuStreamWrite& operator<<(const char16_t* text) override;

    /// Writes `size` raw bytes.
    void WriteBuffer(const void* data, unsigned long long size)
    {
        if (size <= static_cast<unsigned long long>(m_windowEnd - m_window)) {
            if (size != 0) {
                std::memcpy(m_window, data, static_cast<std::size_t>(size));
                m_window += size;
            }
        } else {
            write(data, size);
        }
    }
    /// Writes an object so that TuStreamReadBinary::ReadChunk can make it again without knowing its
    /// class: version 0, the class name as wide text, what the object's Serialize writes.
    void WriteChunk(const ISerializable& object);

protected:
    TuStreamWriteBinary() = default;
    // A window belongs to the buffer of one stream.
    TuStreamWriteBinary(const TuStreamWriteBinary&) = delete;
    TuStreamWriteBinary& operator=(const TuStreamWriteBinary&) = delete;

    /// Takes all of `size` bytes, or throws. Called when they do not fit the window.
    virtual void write(const void* data, unsigned long long size) = 0;

    void writeText(std::string_view text) override;
    void writeText(std::u16string_view text) override;

    /// Lends out the free part of the stream's buffer; getWindow() tells how far it has been
    /// filled.
    void setWindow(unsigned char* begin, unsigned char* end)
    {
        m_window = begin;
        m_windowEnd = end;
    }
    unsigned char* getWindow() const { return m_window; }
    unsigned char* getWindowEnd() const { return m_windowEnd; }

private:
    template <class T> TuStreamWrite& put(T value)
    {
        if (m_windowEnd - m_window >= static_cast<std::ptrdiff_t>(sizeof(T))) {
            TuStoreLittleEndian(m_window, value);
            m_window += sizeof(T);
        } else {
            unsigned char bytes[sizeof(T)];
            TuStoreLittleEndian(bytes, value);
            write(bytes, sizeof(T));
        }
        return *this;
    }

    unsigned char* m_window = nullptr; // where the next byte goes
    unsigned char* m_windowEnd = nullptr;
};
