#include "tacompression/tafloatingpointquantizationuniform.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace {

// Every float of this magnitude or more is a whole number.
constexpr float kWhole = 8388608.0f; // 2^23
constexpr float kBeyondInt32 = 2147483648.0f; // 2^31

/// Rounds to the nearest whole number, halves upwards: a number that is not whole becomes the floor
/// of itself plus 0.5, and the sum is rounded to single precision, as stored codes depend on it
/// (0.49999997 becomes 1). The result is clamped to 32 bits.
std::int32_t roundToInteger(float value)
{
    if (value > -kWhole && value < kWhole) {
        const auto truncated = static_cast<std::int32_t>(value);
        if (static_cast<float>(truncated) == value) {
            return truncated;
        }
        const float shifted = value + 0.5f;
        const auto integer = static_cast<std::int32_t>(shifted);
        return static_cast<float>(integer) > shifted ? integer - 1 : integer;
    }
    if (value >= kBeyondInt32) {
        return std::numeric_limits<std::int32_t>::max();
    }
    return value >= -kBeyondInt32 ? static_cast<std::int32_t>(value)
                                  : std::numeric_limits<std::int32_t>::min(); // or not a number
}

} // namespace

TaFloatingPointQuantizationUniform::TaFloatingPointQuantizationUniform(
    float minimum, float maximum, float scale)
    : m_scale(scale)
    , m_minValue(roundToInteger(minimum * scale))
    , m_maxValue(static_cast<std::uint32_t>(roundToInteger(maximum * scale))
          - static_cast<std::uint32_t>(m_minValue))
{
    m_bitCount = std::max(static_cast<std::uint32_t>(std::bit_width(m_maxValue)), 1U);
}

std::uint32_t TaFloatingPointQuantizationUniform::Map(float value) const
{
    // In 64 bits, where the difference cannot overflow; the largest code is a signed number here.
    const std::int64_t code = std::int64_t{ roundToInteger(value * m_scale) } - m_minValue;
    const auto largest = static_cast<std::int32_t>(m_maxValue);
    return static_cast<std::uint32_t>(
        std::max<std::int64_t>(std::min<std::int64_t>(code, largest), 0));
}

float TaFloatingPointQuantizationUniform::Unmap(std::uint32_t code) const
{
    const auto scaled = static_cast<std::int32_t>(static_cast<std::uint32_t>(m_minValue) + code);
    return static_cast<float>(scaled) / m_scale;
}
