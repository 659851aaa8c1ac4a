#include "platform/platformtaskmemory.h"

#include <cstdlib>

namespace platform {

void* AllocateTaskMemory(std::size_t size) noexcept { return std::malloc(size); }

void FreeTaskMemory(void* block) noexcept { std::free(block); }

} // namespace platform
