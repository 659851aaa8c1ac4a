#pragma once

#include "platform/platformapi.h"

#include <string>

namespace platform {

/// What the system says of the last call that failed on this thread.
struct SSystemError
{
    unsigned int number = 0; // errno, or the Windows error code
    std::u16string text; // the system's message, without a line end
};

/// Reads the calling thread's last error; call it before anything else that may change it.
PLATFORM_API SSystemError GetLastSystemError();

/// Makes `number` the calling thread's last error, as a failing system call would.
PLATFORM_API void SetLastSystemError(unsigned int number);

} // namespace platform
