#pragma once

#include "groundwork/tulittleendian.h"
#include "groundwork/tustreamread.h"

#include <cstring>

class ISerializable;

/// The binary reader: the mirror of TuStreamWriteBinary.
///
/// Everything ends in read(), the one operation that a concrete stream supplies. A stream with a
/// buffer lends its unread part out as the window (setWindow), where numbers are taken without a
/// call.
///
/// Failure: besides that of TuStreamRead: a bool that is neither 0 nor 1 is malformed. A count
/// never
///          makes the reader take more memory than bytes arrive, but for one step of 64 KiB.
class GROUNDWORK_API TuStreamReadBinary : public TuStreamRead
{
    TU_DECLARE_RTTI

public:
    using TuStreamRead::operator>>;
    TuStreamRead& operator>>(bool& value) override;
    TuStreamRead& operator>>(signed char& value) override { return get(value); }
    TuStreamRead& operator>>(unsigned char& value) override { return get(value); }
    TuStreamRead& operator>>(short& value) override { return get(value); }
    TuStreamRead& operator>>(unsigned short& value) override { return get(value); }
    TuStreamRead& operator>>(int& value) override { return get(value); }
    TuStreamRead& operator>>(unsigned int& value) override { return get(value); }
    TuStreamRead& operator>>(long long& value) override { return get(value); }
    TuStreamRead& operator>>(unsigned long long& value) override { return get(value); }
    TuStreamRead& operator>>(float& value) override { return get(value); }
    TuStreamRead& operator>>(double& value) override { return get(value); }
    TuStreamRead& operator>>(CStringA& text) override;
    TuStreamRead& operator>>(CString& text) override;

    /// Reads raw bytes; returns how many there were, fewer than `size` only at the end.
    unsigned long long ReadBuffer(void* data, unsigned long long size)
    {
        if (size <= static_cast<unsigned long long>(m_windowEnd - m_window)) {
            if (size != 0) {
                std::memcpy(data, m_window, static_cast<std::size_t>(size));
                m_window += size;
            }
            return size;
        }
        return read(data, size);
    }
    /// Reads `size` raw bytes, or throws TuExceptionStream.
    void ReadExactly(void* data, unsigned long long size)
    {
        if (ReadBuffer(data, size) != size) {
            throwEndedEarly();
        }
    }
    /// Makes the object that WriteChunk wrote, and lets it read itself. The caller owns it.
    /// Throws TuException for a class that is unknown, or cannot be created or serialized; what the
    /// object's Serialize throws passes on. Nothing is left behind then.
    ISerializable* ReadChunk();

protected:
    TuStreamReadBinary() = default;
    // A window belongs to the buffer of one stream.
    TuStreamReadBinary(const TuStreamReadBinary&) = delete;
    TuStreamReadBinary& operator=(const TuStreamReadBinary&) = delete;

    /// Delivers up to `size` bytes and returns how many; fewer only at the end. Called when the
    /// window holds fewer than `size`; what it holds comes first.
    virtual unsigned long long read(void* data, unsigned long long size) = 0;

    /// Lends out the unread part of the stream's buffer; getWindow() tells how far it has been
    /// taken.
    void setWindow(const unsigned char* begin, const unsigned char* end)
    {
        m_window = begin;
        m_windowEnd = end;
    }
    const unsigned char* getWindow() const { return m_window; }
    const unsigned char* getWindowEnd() const { return m_windowEnd; }

private:
    template <class T> TuStreamRead& get(T& value)
    {
        if (m_windowEnd - m_window >= static_cast<std::ptrdiff_t>(sizeof(T))) {
            value = TuLoadLittleEndian<T>(m_window);
            m_window += sizeof(T);
        } else {
            unsigned char bytes[sizeof(T)];
            ReadExactly(bytes, sizeof(T));
            value = TuLoadLittleEndian<T>(bytes);
        }
        return *this;
    }
    template <class Text> void readText(Text& text);
    [[noreturn]] static void throwEndedEarly();

    const unsigned char* m_window = nullptr; // where the next byte lies
    const unsigned char* m_windowEnd = nullptr;
};
