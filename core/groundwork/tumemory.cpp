#include "groundwork/tumemory.h"

#include <cstdlib>
#include <utility>

namespace {

thread_local TuAllocationHook s_hook = nullptr;

bool isRefused(std::size_t size) { return size == 0 || (s_hook != nullptr && !s_hook(size)); }

} // namespace

void* TuAllocateBlock(std::size_t size) noexcept
{
    return isRefused(size) ? nullptr : std::malloc(size);
}

void* TuReallocateBlock(void* block, std::size_t size) noexcept
{
    return isRefused(size) ? nullptr : std::realloc(block, size);
}

void TuFreeBlock(void* block) noexcept { std::free(block); }

TuAllocationHook TuSetAllocationHook(TuAllocationHook hook) { return std::exchange(s_hook, hook); }
