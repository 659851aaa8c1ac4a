#pragma once

#include "platform/platformapi.h"

#include <cstddef>

namespace platform {

/// Memory that one thread takes and another gives back, whatever libraries they are in: for blocks
/// that travel with window messages. On Windows the system's task allocator.
///
/// Failure: null, without memory.
[[nodiscard]] PLATFORM_API void* AllocateTaskMemory(std::size_t size) noexcept;
/// Null is allowed.
PLATFORM_API void FreeTaskMemory(void* block) noexcept;

} // namespace platform
