#pragma once

#include "tacompression/tacompressionapi.h"

#include <cstdint>

/// Maps floats to unsigned codes of a known width, and back: what the compressed floating-point
/// streams need to know of a quantization.
///
/// Threads: as a standard container: a quantization that is not assigned to may be used by many.
/// Failure: none; every float has a code, and every code a float.
class TACOMPRESSION_API TaFloatingPointQuantization
{
public:
    virtual ~TaFloatingPointQuantization() = default;

    virtual std::uint32_t Map(float value) const = 0;
    virtual float Unmap(std::uint32_t code) const = 0;

    /// The bits that a code needs, 1 to 32.
    std::uint32_t GetBitCount() const { return m_bitCount; }

protected:
    TaFloatingPointQuantization() = default;
    TaFloatingPointQuantization(const TaFloatingPointQuantization&) = default;
    TaFloatingPointQuantization& operator=(const TaFloatingPointQuantization&) = default;

    std::uint32_t m_bitCount = 1;
};
