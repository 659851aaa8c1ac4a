#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

/// How many symbols the model of a predictive coder has: `maxBits` for lesser values, as many for
/// greater ones, and the one of no difference between them. A count that does not fit becomes one
/// that every model refuses.
inline std::uint32_t GetPredictiveSymbolCount(std::uint32_t maxBits)
{
    constexpr std::uint64_t kMost = std::numeric_limits<std::uint32_t>::max();
    return static_cast<std::uint32_t>(std::min(2 * std::uint64_t{ maxBits } + 1, kMost));
}
