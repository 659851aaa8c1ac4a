#pragma once

#include "tabase/tabaseapi.h"

#include <cstdint>

/// Pseudo-random numbers from 0 to 32767, the same on every system for the same seed: the generator
/// that the C standard prints as its example of a portable one (ISO/IEC 9899:2011, 7.22.2.2).
///
/// For colours and other choices that only have to look different; its period is 2^31 or less, so
/// it serves neither statistics nor secrets.
///
/// Threads: an object serves one thread at a time.
/// Failure: none.
class TABASE_API TaRandomSource
{
public:
    static constexpr unsigned int kGreatest = 32767;

    explicit TaRandomSource(std::uint32_t seed = 1)
        : m_state(seed)
    {
    }

    /// 0 to kGreatest.
    unsigned int GetNext();
    /// Starts the seed's sequence from its beginning.
    void SetSeed(std::uint32_t seed) { m_state = seed; }
    /// The seed of what is still to come.
    std::uint32_t GetSeed() const { return m_state; }

private:
    std::uint32_t m_state;
};
