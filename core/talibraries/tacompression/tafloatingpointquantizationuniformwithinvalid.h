#pragma once

#include "tacompression/tafloatingpointquantizationuniform.h"

/// A uniform quantization that keeps one designated value exactly: it has a code of its own, the
/// largest that fits the bit count, which grows by one where the range needs it itself.
///
/// The value is recognised by `==`: -0 is 0, and a designated value that is not a number is never
/// met. Where 32 bits leave no code free, it shares one with an ordinary value, which then comes
/// back as the designated one.
class TACOMPRESSION_API TaFloatingPointQuantizationUniformWithInvalid
    : public TaFloatingPointQuantizationUniform
{
public:
    TaFloatingPointQuantizationUniformWithInvalid(
        float minimum, float maximum, float scale, float invalidValue);

    std::uint32_t Map(float value) const override;
    float Unmap(std::uint32_t code) const override;

private:
    float m_invalidValue;
    std::uint32_t m_invalidCode;
};
