#pragma once

#include "groundwork/tumemory.h"

#include <cstddef>

/// While it lives, the containers of this thread get `allowed` more blocks, then none.
class AllocationLimit
{
public:
    explicit AllocationLimit(unsigned int allowed)
        : m_former(TuSetAllocationHook(allow))
    {
        s_left = allowed;
        s_largest = 0;
    }
    ~AllocationLimit() { TuSetAllocationHook(m_former); }
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;

    unsigned int GetLeft() const { return s_left; }
    /// The largest block asked for, granted or not.
    std::size_t GetLargest() const { return s_largest; }

private:
    static bool allow(std::size_t size)
    {
        s_largest = size > s_largest ? size : s_largest;
        return s_left != 0 && s_left-- != 0;
    }

    static inline thread_local unsigned int s_left = 0;
    static inline thread_local std::size_t s_largest = 0;

    TuAllocationHook m_former;
};

/// Runs `attempt` with no allocation allowed, then one, then two, until it succeeds; `attempt`
/// returns whether it did. Returns how many times it failed.
template <class Attempt> unsigned int FailEachAllocation(Attempt&& attempt)
{
    unsigned int allowed = 0;
    while (!attempt(allowed)) {
        ++allowed;
    }
    return allowed;
}
