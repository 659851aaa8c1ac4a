#include "tabase/tastreamreadbinarybuffer.h"

#include "tabase/tastreamwritebinarybuffer.h"

#include <algorithm>
#include <cstring>

TU_DEFINE_RTTI(TaStreamReadBinaryBuffer, TuStreamReadBinary, nullptr, nullptr);

TaStreamReadBinaryBuffer::TaStreamReadBinaryBuffer(const void* data, std::size_t size)
    : m_begin(static_cast<const unsigned char*>(data))
{
    setWindow(m_begin, m_begin + size);
}

TaStreamReadBinaryBuffer::TaStreamReadBinaryBuffer(const TaStreamWriteBinaryBuffer& written)
    : TaStreamReadBinaryBuffer(written.GetData(), written.GetSize())
{
}

unsigned long long TaStreamReadBinaryBuffer::read(void* data, unsigned long long size)
{
    const auto step = std::min<unsigned long long>(size, GetRemaining());
    if (step != 0) {
        std::memcpy(data, getWindow(), static_cast<std::size_t>(step));
        setWindow(getWindow() + step, getWindowEnd());
    }
    return step;
}
