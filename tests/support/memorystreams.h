#pragma once

#include "groundwork/tustreamreadbinary.h"
#include "groundwork/tustreamwritebinary.h"

#include <algorithm>
#include <vector>

/// The plainest binary streams that can be written: over a vector, without a window. Tests of
/// records use them, so that they depend on no other stream.
class PlainStreamWrite : public TuStreamWriteBinary
{
public:
    std::vector<unsigned char> bytes;

private:
    void write(const void* data, unsigned long long size) override
    {
        const auto* first = static_cast<const unsigned char*>(data);
        bytes.insert(bytes.end(), first, first + size);
    }
};

class PlainStreamRead : public TuStreamReadBinary
{
public:
    explicit PlainStreamRead(const std::vector<unsigned char>& bytes)
        : m_bytes(bytes)
    {
    }
    bool IsAtEnd() const { return m_position == m_bytes.size(); }

private:
    unsigned long long read(void* data, unsigned long long size) override
    {
        const std::size_t count
            = std::min(m_bytes.size() - m_position, static_cast<std::size_t>(size));
        std::copy_n(m_bytes.data() + m_position, count, static_cast<unsigned char*>(data));
        m_position += count;
        return count;
    }

    const std::vector<unsigned char>& m_bytes;
    std::size_t m_position = 0;
};

template <class Action> std::vector<unsigned char> WriteToBytes(Action&& action)
{
    PlainStreamWrite stream;
    action(stream);
    return stream.bytes;
}

/// Returns whether `action` read to the end.
template <class Action> bool ReadFromBytes(const std::vector<unsigned char>& bytes, Action&& action)
{
    PlainStreamRead stream(bytes);
    action(stream);
    return stream.IsAtEnd();
}
