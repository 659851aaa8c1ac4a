#pragma once

#include "tacompression/tafloatingpointquantization.h"

/// Evenly spaced codes over a closed range: code c stands for (minimum * scale + c) / scale, all of
/// it in single precision.
///
/// Values are rounded to the nearest code, halves upwards (also those of negative values), and
/// clamped into the range: below it to code 0, above it to the largest code. A scaled value beyond
/// what 32 signed bits hold counts as the nearest that they do, and one that is not a number as the
/// least. Codes reach from the rounded minimum to the rounded maximum, so a restored value may lie
/// half a step outside the range.
///
/// The codes compare as signed numbers: a quantization of 2^31 codes or more maps every value to
/// code 0. Stored data depends on it.
///
///     TaFloatingPointQuantizationUniform bytes(0.0f, 1.0f, 255.0f); // 8 bits
class TACOMPRESSION_API TaFloatingPointQuantizationUniform : public TaFloatingPointQuantization
{
public:
    /// `scale` is in codes per unit of value.
    TaFloatingPointQuantizationUniform(float minimum, float maximum, float scale);

    std::uint32_t Map(float value) const override;
    /// With a scale of 0: an infinity, or no number.
    float Unmap(std::uint32_t code) const override;

    /// The rounded, scaled minimum, which code 0 stands for.
    std::int32_t GetMinValue() const { return m_minValue; }
    /// The largest code.
    std::uint32_t GetMaxValue() const { return m_maxValue; }

private:
    friend class TaFloatingPointQuantization; // bulk operations

    void mapAll(std::span<const float> values, std::span<std::uint32_t> codes) const;
    void unmapAll(std::span<const std::uint32_t> codes, std::span<float> values) const;

    float m_scale;
    std::int32_t m_minValue;
    std::uint32_t m_maxValue;
};
