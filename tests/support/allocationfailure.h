#pragma once

#include "groundwork/tumemory.h"

/// While it lives, the allocations of this thread are counted, and one of them fails: those of the
/// containers, and, in a program that replaces operator new by one that asks Allow(), all others.
class AllocationFailure
{
public:
    /// Counted from 1.
    explicit AllocationFailure(unsigned int number)
        : m_former(TuSetAllocationHook([](std::size_t) { return Allow(); }))
    {
        s_count = 0;
        s_failing = number;
    }
    ~AllocationFailure()
    {
        s_failing = 0;
        TuSetAllocationHook(m_former);
    }
    AllocationFailure(const AllocationFailure&) = delete;
    AllocationFailure& operator=(const AllocationFailure&) = delete;

    bool HasHappened() const { return s_count >= s_failing; }

    static bool Allow() { return s_failing == 0 || ++s_count != s_failing; }

private:
    static inline thread_local unsigned int s_count = 0;
    static inline thread_local unsigned int s_failing = 0; // 0: nothing is counted

    TuAllocationHook m_former;
};
