#include "tabase/tastreamwritebinarybuffer.h"

#include "groundwork/tuexceptions.h"
#include "groundwork/tumemory.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>

TU_DEFINE_RTTI(TaStreamWriteBinaryBuffer, TuStreamWriteBinary, nullptr, nullptr);

TaStreamWriteBinaryBuffer::TaStreamWriteBinaryBuffer(std::size_t expectedSize)
{
    if (expectedSize != 0) {
        reserve(expectedSize);
    }
}

TaStreamWriteBinaryBuffer::~TaStreamWriteBinaryBuffer() { TuFreeBlock(m_bytes); }

void TaStreamWriteBinaryBuffer::Clear() { setWindow(m_bytes, getWindowEnd()); }

void TaStreamWriteBinaryBuffer::write(const void* data, unsigned long long size)
{
    const std::size_t used = GetSize();
    const auto capacity = static_cast<std::size_t>(getWindowEnd() - m_bytes);
    if (size > std::numeric_limits<std::size_t>::max() / 4 - used) {
        throw TuExceptionOutOfMemory(TU_HERE);
    }
    // What is written may be a part of what was written before, and moves with it.
    const auto* bytes = static_cast<const unsigned char*>(data);
    const bool isOwn = std::greater_equal<>()(bytes, m_bytes)
        && std::less<>()(bytes, static_cast<const unsigned char*>(getWindow()));
    const std::ptrdiff_t offset = isOwn ? bytes - m_bytes : 0;
    const std::size_t wanted = used + static_cast<std::size_t>(size);
    if (wanted > capacity) {
        // Doubling makes the cost of growing linear in the bytes written. Where there is no room
        // for twice as much there may be for what is needed.
        constexpr std::size_t kFirstCapacity = 256;
        const std::size_t doubled = std::max({ wanted, capacity * 2, kFirstCapacity });
        if (!tryReserve(doubled)) {
            reserve(wanted);
        }
    }
    if (size != 0) {
        std::memcpy(getWindow(), isOwn ? m_bytes + offset : bytes, static_cast<std::size_t>(size));
    }
    setWindow(getWindow() + size, getWindowEnd());
}

void TaStreamWriteBinaryBuffer::reserve(std::size_t capacity)
{
    if (!tryReserve(capacity)) {
        throw TuExceptionOutOfMemory(TU_HERE);
    }
}

bool TaStreamWriteBinaryBuffer::tryReserve(std::size_t capacity) noexcept
{
    const std::size_t used = GetSize();
    auto* bytes = static_cast<unsigned char*>(TuReallocateBlock(m_bytes, capacity));
    if (bytes != nullptr) {
        m_bytes = bytes;
        setWindow(m_bytes + used, m_bytes + capacity);
    }
    return bytes != nullptr;
}
