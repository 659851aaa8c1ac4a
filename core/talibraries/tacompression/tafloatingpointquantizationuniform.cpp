#include "tacompression/tafloatingpointquantizationuniform.h"

#include <algorithm>
#include <array>
#include <bit>
#include <limits>

namespace {

// Every float of this magnitude or more is a whole number.
constexpr float kWhole = 8388608.0f; // 2^23
constexpr float kBeyondInt32 = 2147483648.0f; // 2^31

/// Rounds to the nearest whole number, halves upwards: a number that is not whole becomes the floor
/// of itself plus 0.5, and the sum is rounded to single precision, as stored codes depend on it
/// (0.49999997 becomes 1).
///
/// `value` is less than 2^23 either way. Of a whole number, which stays as it is, the sum is exact
/// then, so that nothing needs to tell it from others.
std::int32_t roundSmall(float value)
{
    const float shifted = value + 0.5f;
    const auto integer = static_cast<std::int32_t>(shifted);
    return integer - static_cast<std::int32_t>(static_cast<float>(integer) > shifted);
}

/// The same for every value. The result is clamped to 32 bits.
std::int32_t roundToInteger(float value)
{
    if (value > -kWhole && value < kWhole) {
        return roundSmall(value);
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

/// Where all codes are small, a scaled value may be clamped before it is rounded, and what makes
/// Map slow, large and other unusual values, needs no branch. It is done in runs of a length that
/// the compiler knows, in arrays that nothing else reaches, so that it takes several at once.
void TaFloatingPointQuantizationUniform::mapAll(
    std::span<const float> values, std::span<std::uint32_t> codes) const
{
    constexpr std::int32_t kSmall = 1 << 22; // such numbers and their neighbours are exact floats
    constexpr std::size_t kRun = 32;
    const auto largest = static_cast<std::int32_t>(m_maxValue);
    const bool areSmall
        = m_minValue > -kSmall && m_minValue < kSmall && largest >= 0 && largest < kSmall;
    const float scale = m_scale;
    const std::int32_t minValue = m_minValue;
    const auto least = static_cast<float>(minValue);
    const float greatest = least + static_cast<float>(largest);
    std::size_t done = 0;
    for (; areSmall && values.size() - done >= kRun; done += kRun) {
        std::array<float, kRun> run;
        std::array<std::int32_t, kRun> runCodes;
        std::copy_n(values.data() + done, kRun, run.data());
        for (std::size_t i = 0; i < kRun; ++i) {
            float scaled = run[i] * scale;
            scaled = scaled > least ? scaled : least; // also where it is no number
            scaled = scaled < greatest ? scaled : greatest;
            runCodes[i] = roundSmall(scaled) - minValue;
        }
        std::copy_n(runCodes.data(), kRun, codes.data() + done);
    }
    for (; done < values.size(); ++done) {
        codes[done] = TaFloatingPointQuantizationUniform::Map(values[done]);
    }
}

void TaFloatingPointQuantizationUniform::unmapAll(
    std::span<const std::uint32_t> codes, std::span<float> values) const
{
    const TaFloatingPointQuantizationUniform uniform = *this; // not what `values` could reach
    for (std::size_t i = 0; i < codes.size(); ++i) {
        values[i] = uniform.TaFloatingPointQuantizationUniform::Unmap(codes[i]);
    }
}

float TaFloatingPointQuantizationUniform::Unmap(std::uint32_t code) const
{
    const auto scaled = static_cast<std::int32_t>(static_cast<std::uint32_t>(m_minValue) + code);
    return static_cast<float>(scaled) / m_scale;
}
