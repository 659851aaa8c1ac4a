#include "platform/platformtaskmemory.h"

#include "platform/win32/platformwindows.h"

#include <objbase.h>

namespace platform {

void* AllocateTaskMemory(std::size_t size) noexcept { return ::CoTaskMemAlloc(size); }

void FreeTaskMemory(void* block) noexcept { ::CoTaskMemFree(block); }

} // namespace platform
