#include "support/largestblock.h"

#include "support/allocationfailure.h"

#include <cstdlib>
#include <new>

std::atomic<std::size_t> s_largestBlock{ 0 };
thread_local bool s_isMemoryGone = false;

void* operator new(std::size_t size)
{
    if (size > s_largestBlock) {
        s_largestBlock = size;
    }
    const bool isRefused = s_isMemoryGone || !AllocationFailure::Allow();
    void* const block = isRefused ? nullptr : std::malloc(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

// The library's own does the same, but not that of the address sanitizer, which then misses the
// block at its delete.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return operator new(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void operator delete(void* block) noexcept { std::free(block); }

void operator delete(void* block, std::size_t) noexcept { std::free(block); }
