#pragma once

#include "tacompression/tacompressionapi.h"

#include <bit>
#include <cstddef>
#include <cstdint>

/// The registers of a range coder that reads, and the bytes that it has not taken: the mirror of
/// TaRangeEncoder, for TaDecompressRangeCoder.
///
/// An item is read in two steps: Find tells the number in whose share it lies, and Take removes the
/// share. Whatever the bytes are, the range is never 0 between two items, and each of the one
/// or two rounds of an item takes three bytes at most.
///
/// Failure: TuExceptionStream when the bytes run out, and again at every later attempt.
struct TACOMPRESSION_API TaRangeDecoder
{
    /// A number less than 2^totalBits; it may be greater where the bytes were not coded like this.
    std::uint32_t Find(std::uint32_t totalBits)
    {
        Normalize();
        range >>= totalBits;
        return (code - low) / range;
    }
    void Take(std::uint32_t cumulative, std::uint32_t frequency)
    {
        low += cumulative * range;
        range *= frequency;
    }

    /// `bitCount` is 0 to 32. The result may have more bits where the bytes were not coded like
    /// this.
    std::uint32_t DecodeBits(std::uint32_t bitCount)
    {
        std::uint32_t result = 0;
        if (bitCount > 16) {
            const std::uint32_t high = Find(bitCount - 16);
            Take(high, 1);
            result = high << 16;
            bitCount = 16;
        }
        const std::uint32_t value = Find(bitCount);
        Take(value & 0xFFFF, 1);
        return result + value;
    }

    unsigned char DecodeByte()
    {
        const auto value = static_cast<unsigned char>(Find(8));
        Take(value, 1);
        return value;
    }

    void Normalize()
    {
        const auto settled
            = static_cast<std::uint32_t>(std::countl_zero((low + range) ^ low)) & ~7U;
        const std::ptrdiff_t remaining = end - next;
        std::uint32_t ahead = 0;
        if (remaining >= 4) [[likely]] {
            ahead = static_cast<std::uint32_t>(next[0]) << 24
                | static_cast<std::uint32_t>(next[1]) << 16
                | static_cast<std::uint32_t>(next[2]) << 8 | next[3];
        } else {
            ahead = loadLast(settled / 8);
        }
        const std::uint64_t joined = std::uint64_t{ code } << 32 | ahead;
        code = static_cast<std::uint32_t>((joined << settled) >> 32);
        next += settled / 8;
        low <<= settled;
        range <<= settled;
        if (range < kBottom) [[unlikely]] {
            takeTwo();
        }
    }

    static constexpr std::uint32_t kBottom = 1U << 16;

    std::uint32_t code = 0;
    std::uint32_t low = 0;
    std::uint32_t range = 0xFFFFFFFF;
    const unsigned char* next = nullptr;
    const unsigned char* end = nullptr;

private:
    /// What Normalize finds where fewer than four bytes are left, of which it takes `count`.
    std::uint32_t loadLast(std::uint32_t count) const;
    void takeTwo();
};
