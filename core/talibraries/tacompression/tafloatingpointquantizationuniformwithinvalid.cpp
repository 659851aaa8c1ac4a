#include "tacompression/tafloatingpointquantizationuniformwithinvalid.h"

namespace {

constexpr std::uint32_t kMostBits = 32;

std::uint32_t getLargestCode(std::uint32_t bitCount)
{
    return static_cast<std::uint32_t>((std::uint64_t{ 1 } << bitCount) - 1);
}

} // namespace

TaFloatingPointQuantizationUniformWithInvalid::TaFloatingPointQuantizationUniformWithInvalid(
    float minimum, float maximum, float scale, float invalidValue)
    : TaFloatingPointQuantizationUniform(minimum, maximum, scale)
    , m_invalidValue(invalidValue)
{
    const bool isFull = GetMaxValue() == getLargestCode(m_bitCount);
    if (isFull && m_bitCount == kMostBits) {
        m_invalidCode = TaFloatingPointQuantizationUniform::Map(invalidValue);
        return;
    }
    if (isFull) {
        ++m_bitCount;
    }
    m_invalidCode = getLargestCode(m_bitCount);
}

std::uint32_t TaFloatingPointQuantizationUniformWithInvalid::Map(float value) const
{
    return value == m_invalidValue ? m_invalidCode : TaFloatingPointQuantizationUniform::Map(value);
}

float TaFloatingPointQuantizationUniformWithInvalid::Unmap(std::uint32_t code) const
{
    return code == m_invalidCode ? m_invalidValue : TaFloatingPointQuantizationUniform::Unmap(code);
}
