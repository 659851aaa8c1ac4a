#pragma once

#include <cstdint>

/// The remainder of a division by the same number again and again, as hash tables need it: exact
/// for every value, and several times as fast as the processor's division.
///
/// The reciprocal is r = 2^64 / d, rounded up, modulo 2^64 (0 for d = 1).
class TuHashModulo
{
public:
    /// `divisor` is not 0.
    static constexpr std::uint64_t GetReciprocal(std::uint32_t divisor)
    {
        return ~std::uint64_t{ 0 } / divisor + 1;
    }

    /// value % divisor. The lower half of value * r is the fraction of value / d, too large by less
    /// than value * d / 2^64 < 1 of what d makes of it: the upper half of its product with d is the
    /// remainder.
    static constexpr std::uint32_t Compute(
        std::uint32_t value, std::uint32_t divisor, std::uint64_t reciprocal)
    {
        return static_cast<std::uint32_t>(highProduct(value * reciprocal, divisor));
    }

    /// value % divisor. With r - 1, which falls short of 2^64 / d by at most 1, the upper half of
    /// value * (r - 1) is the quotient or one less.
    static constexpr std::uint32_t Compute(
        std::uint64_t value, std::uint32_t divisor, std::uint64_t reciprocal)
    {
        const std::uint64_t rest = value - highProduct(value, reciprocal - 1) * divisor;
        return static_cast<std::uint32_t>(rest >= divisor ? rest - divisor : rest);
    }

private:
    static constexpr std::uint64_t highProduct(std::uint64_t a, std::uint64_t b)
    {
        __extension__ using Wide = unsigned __int128;
        return static_cast<std::uint64_t>((Wide{ a } * b) >> 64);
    }
};
