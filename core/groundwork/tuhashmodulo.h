#pragma once

#include <cstdint>

/// Division by the same number again and again, as hash tables do: exact for every value, and
/// several times as fast as the processor's division.
///
/// With m = floor((2^64 - 1) / d), the upper half of value * m is the quotient or one less: m falls
/// short of 2^64 / d by at most 1, so the product falls short of value / d by less than 1.
class TuHashModulo
{
public:
    /// `divisor` is not 0.
    static constexpr std::uint64_t GetReciprocal(std::uint32_t divisor)
    {
        return ~std::uint64_t{ 0 } / divisor;
    }

    /// value % divisor.
    static constexpr std::uint32_t Compute(
        std::uint64_t value, std::uint32_t divisor, std::uint64_t reciprocal)
    {
        __extension__ using Wide = unsigned __int128;
        const auto quotient = static_cast<std::uint64_t>((Wide{ value } * reciprocal) >> 64);
        const std::uint64_t rest = value - quotient * divisor;
        return static_cast<std::uint32_t>(rest >= divisor ? rest - divisor : rest);
    }
};
