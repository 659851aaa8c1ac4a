#pragma once

#include "groundwork/tulittleendian.h"
#include "groundwork/tustreamread.h"

/// Half of TuStreamReadBinary: the virtual operators, and the window. It is a class of its own so
/// that the operators of TuStreamReadBinary, which need no call, are the better match.
class GROUNDWORK_API TuStreamReadBinaryBase : public TuStreamRead
{
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

protected:
    TuStreamReadBinaryBase() = default;
    // A window belongs to the buffer of one stream.
    TuStreamReadBinaryBase(const TuStreamReadBinaryBase&) = delete;
    TuStreamReadBinaryBase& operator=(const TuStreamReadBinaryBase&) = delete;

    /// Delivers up to `size` bytes and returns how many; fewer only at the end. Called when the
    /// window holds fewer than `size`; what it holds comes first.
    virtual unsigned long long read(void* data, unsigned long long size) = 0;

    /// Lends out the unread part of the stream's buffer; getWindow() tells how far it has been
    /// taken. A stream that overrides an operator for numbers lends none.
    void setWindow(const unsigned char* begin, const unsigned char* end)
    {
        m_window = begin;
        m_windowEnd = end;
    }
    const unsigned char* getWindow() const { return m_window; }
    const unsigned char* getWindowEnd() const { return m_windowEnd; }

    /// Takes a number off the window; false when the window holds too little for it.
    template <class T> bool takeFromWindow(T& value)
    {
        if (m_windowEnd - m_window < static_cast<std::ptrdiff_t>(sizeof(T))) {
            return false;
        }
        value = TuLoadLittleEndian<T>(m_window);
        m_window += sizeof(T);
        return true;
    }
    /// A malformed bool is left to the operator, which reports it.
    bool takeFromWindow(bool& value)
    {
        if (m_window == m_windowEnd || *m_window > 1) {
            return false;
        }
        value = *m_window++ == 1;
        return true;
    }

    /// Throws TuExceptionStream when there are fewer bytes.
    void readExactly(void* data, unsigned long long size);

private:
    template <class T> TuStreamRead& get(T& value)
    {
        if (!takeFromWindow(value)) {
            unsigned char bytes[sizeof(T)];
            readExactly(bytes, sizeof(T));
            value = TuLoadLittleEndian<T>(bytes);
        }
        return *this;
    }

    template <class Text> void readText(Text& text);

    const unsigned char* m_window = nullptr; // where the next byte lies
    const unsigned char* m_windowEnd = nullptr;
};
