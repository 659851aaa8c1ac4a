#pragma once

#include "tacompression/tacompressionapi.h"

#include <cstdint>
#include <span>

/// Maps floats to unsigned codes of a known width, and back: what the compressed floating-point
/// streams need to know of a quantization.
///
/// What a value maps to depends on nothing else, so that bulk operations may map in any order.
///
/// Threads: as a standard container: a quantization that is not assigned to may be used by many.
/// Failure: none from Map and Unmap: every float has a code, and every code a float.
class TACOMPRESSION_API TaFloatingPointQuantization
{
public:
    virtual ~TaFloatingPointQuantization() = default;

    virtual std::uint32_t Map(float value) const = 0;
    virtual float Unmap(std::uint32_t code) const = 0;

    /// The same as one by one, and faster for a quantization that is uniform and nothing else.
    /// There is a code for each value; otherwise TuExceptionPreconditionViolation.
    void MapValues(std::span<const float> values, std::span<std::uint32_t> codes) const;
    void UnmapValues(std::span<const std::uint32_t> codes, std::span<float> values) const;

    /// The bits that a code needs, 1 to 32.
    std::uint32_t GetBitCount() const { return m_bitCount; }

protected:
    TaFloatingPointQuantization() = default;
    TaFloatingPointQuantization(const TaFloatingPointQuantization&) = default;
    TaFloatingPointQuantization& operator=(const TaFloatingPointQuantization&) = default;

    std::uint32_t m_bitCount = 1;
};
