#pragma once

#include "groundwork/groundworkapi.h"

#include <cstddef>

/// All blocks of the containers come from here, so that a test can make memory run out.
/// Blocks are aligned for every fundamental type.

/// Null when there is no memory. `size` 0 gives null, too.
[[nodiscard]] GROUNDWORK_API void* TuAllocateBlock(std::size_t size) noexcept;

/// Grows or shrinks a block, in place where the system can; its bytes are kept. On null the old
/// block is still there, unchanged.
[[nodiscard]] GROUNDWORK_API void* TuReallocateBlock(void* block, std::size_t size) noexcept;

GROUNDWORK_API void TuFreeBlock(void* block) noexcept;

/// Is asked before each allocation on the calling thread: false makes that allocation fail.
using TuAllocationHook = bool (*)(std::size_t size);

/// For tests. Returns the former hook of this thread; null, the default, lets every allocation be.
GROUNDWORK_API TuAllocationHook TuSetAllocationHook(TuAllocationHook hook);
