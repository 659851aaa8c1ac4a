#include "tacompression/tadecompresslzma.h"

#include <utility>

namespace {

constexpr unsigned int kOrdinal = 2;

/// The status of the library when it was asked for the length, and knows it.
constexpr int kStatusSizeReported = -1;

} // namespace

TaDecompressLZMA::TaDecompressLZMA()
    : m_entryPoint(kOrdinal, TuSource{ __FILE__ })
{
}

int TaDecompressLZMA::Decompress(const unsigned char* source, unsigned long sourceLength)
{
    if (!std::in_range<std::uint32_t>(sourceLength)) {
        return 0;
    }
    const auto length = static_cast<std::uint32_t>(sourceLength);
    std::uint32_t capacity = 0;
    if (m_entryPoint(source, length, nullptr, capacity) != kStatusSizeReported) {
        return 0;
    }
    if (!m_output.Prepare(capacity)) {
        // Callers catch it as this type.
        throw static_cast<const char*>("Can not allocate memory");
    }
    std::uint32_t size = capacity;
    if (m_entryPoint(source, length, m_output.GetData(), size) != 0 || size > capacity) {
        return 0;
    }
    m_output.SetSize(size);
    return 1;
}
