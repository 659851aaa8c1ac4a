#pragma once

#include "groundwork/tulittleendian.h"
#include "groundwork/tustreamwrite.h"

#include <cstring>

/// Half of TuStreamWriteBinary: the virtual operators, and the window. It is a class of its own so
/// that the operators of TuStreamWriteBinary, which need no call, are the better match.
class GROUNDWORK_API TuStreamWriteBinaryBase : public TuStreamWrite
{
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

protected:
    TuStreamWriteBinaryBase() = default;
    // A window belongs to the buffer of one stream.
    TuStreamWriteBinaryBase(const TuStreamWriteBinaryBase&) = delete;
    TuStreamWriteBinaryBase& operator=(const TuStreamWriteBinaryBase&) = delete;

    /// Takes all of `size` bytes, or throws. Called when they do not fit the window.
    virtual void write(const void* data, unsigned long long size) = 0;

    /// Lends out the free part of the stream's buffer; getWindow() tells how far it has been
    /// filled. A stream that overrides an operator for numbers lends none.
    void setWindow(unsigned char* begin, unsigned char* end)
    {
        m_window = begin;
        m_windowEnd = end;
    }
    unsigned char* getWindow() const { return m_window; }
    unsigned char* getWindowEnd() const { return m_windowEnd; }

    /// Stores a number in the window; false when the window is too small for it.
    template <class T> bool putIntoWindow(T value)
    {
        if (m_windowEnd - m_window < static_cast<std::ptrdiff_t>(sizeof(T))) {
            return false;
        }
        TuStoreLittleEndian(m_window, value);
        m_window += sizeof(T);
        return true;
    }
    bool putIntoWindow(bool value) { return putIntoWindow<unsigned char>(value ? 1 : 0); }
    /// Stores bytes in the window, or writes them where they do not fit.
    void putBytes(const void* data, unsigned long long size)
    {
        if (size > static_cast<unsigned long long>(m_windowEnd - m_window)) {
            write(data, size);
        } else if (size != 0) {
            std::memcpy(m_window, data, static_cast<std::size_t>(size));
            m_window += size;
        }
    }

    void writeText(std::string_view text) override;
    void writeText(std::u16string_view text) override;

private:
    template <class T> TuStreamWrite& put(T value)
    {
        if (!putIntoWindow(value)) {
            unsigned char bytes[sizeof(T)];
            TuStoreLittleEndian(bytes, value);
            write(bytes, sizeof(T));
        }
        return *this;
    }

    void putCount(std::size_t units);

    unsigned char* m_window = nullptr; // where the next byte goes
    unsigned char* m_windowEnd = nullptr;
};
