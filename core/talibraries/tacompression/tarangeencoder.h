#pragma once

#include <bit>
#include <cstdint>

/// The registers of a range coder that writes, and the place of its next byte.
///
/// The carry-less coder by D. Subbotin (1999) with 32-bit registers: an item narrows the interval
/// [low, low + range), and the bytes that no later item can change go out. It differs from the
/// publication where the interval gets too narrow across a byte boundary: two bytes go out at once,
/// and the range then ends at 2^32. All arithmetic is unsigned, in 32 bits. The range is never less
/// than 2^16 between two items.
///
/// TaCompressRangeCoder has the one that lasts, and checks what it is given; loops over many items
/// work on a copy, which the compiler keeps in processor registers.
struct TaRangeEncoder
{
    /// Room that an item needs behind `next`, at least, to be coded and for the four bytes of
    /// `low`. It has two rounds at most. A round puts out three bytes at most: two at once only
    /// where the range is still less than 2^16, so after one other byte at most.
    static constexpr std::uint32_t kItemRoom = 2 * 3 + 4;

    /// An item whose share begins at `cumulative` of 2^totalBits and is `frequency`, not 0, wide.
    void Encode(std::uint32_t cumulative, std::uint32_t frequency, std::uint32_t totalBits)
    {
        const std::uint32_t unit = range >> totalBits;
        low += unit * cumulative;
        range = unit * frequency;
        Normalize();
    }

    /// The lowest `bitCount` bits, 0 to 32, all values being equally frequent.
    void EncodeBits(std::uint32_t value, std::uint32_t bitCount)
    {
        if (bitCount < 32) {
            value &= (1U << bitCount) - 1;
        }
        if (bitCount > 16) {
            range >>= bitCount - 16;
            low += (value >> 16) * range;
            Normalize();
            bitCount = 16;
            value &= 0xFFFF;
        }
        range >>= bitCount;
        low += value * range;
        Normalize();
    }

    void EncodeByte(unsigned char value)
    {
        range >>= 8;
        low += value * range;
        Normalize();
    }

    /// A top byte that both ends of the interval share goes out, one round for each. At most three
    /// do, for the range is not 0.
    void Normalize()
    {
        const auto settled
            = static_cast<std::uint32_t>(std::countl_zero((low + range) ^ low)) & ~7U;
        storeLow();
        next += settled / 8;
        low <<= settled;
        range <<= settled;
        if (range < kBottom) [[unlikely]] {
            storeLow();
            next += 2;
            low <<= 16;
            range = 0 - low;
        }
    }

    /// The register's four bytes, from the highest on, without moving on.
    void storeLow() const
    {
        next[0] = static_cast<unsigned char>(low >> 24);
        next[1] = static_cast<unsigned char>(low >> 16);
        next[2] = static_cast<unsigned char>(low >> 8);
        next[3] = static_cast<unsigned char>(low);
    }

    static constexpr std::uint32_t kBottom = 1U << 16;

    std::uint32_t low = 0;
    std::uint32_t range = 0xFFFFFFFF;
    unsigned char* next = nullptr;
};
