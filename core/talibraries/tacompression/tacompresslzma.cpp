#include "tacompression/tacompresslzma.h"

#include <utility>

namespace {

constexpr unsigned int kOrdinal = 1;

/// The source, a twentieth of it, and 64 KiB.
std::uint64_t getCapacity(std::uint32_t sourceLength)
{
    return std::uint64_t{ sourceLength / 20 } * 21 + 65536;
}

} // namespace

TaCompressLZMA::TaCompressLZMA()
    : m_entryPoint(kOrdinal, TuSource{ __FILE__ })
{
}

int TaCompressLZMA::Compress(const unsigned char* source, unsigned long sourceLength, unsigned long)
{
    const auto length = static_cast<std::uint32_t>(sourceLength);
    const std::uint64_t capacity = getCapacity(length);
    if (!std::in_range<std::uint32_t>(sourceLength) || !m_output.Prepare(capacity)) {
        reset();
        return 0;
    }
    auto size = static_cast<std::uint32_t>(capacity);
    if (m_entryPoint(source, length, m_output.GetData(), size) != 0 || size > capacity) {
        reset();
        return 0;
    }
    m_output.SetSize(size);
    return 1;
}
