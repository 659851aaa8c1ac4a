#include "platform/platformerror.h"

#include "platform/platformtext.h"

#include <errno.h>

#include <system_error>

namespace platform {

SSystemError GetLastSystemError()
{
    const int number = errno;
    return { static_cast<unsigned int>(number), FromUtf8(std::generic_category().message(number)) };
}

void SetLastSystemError(unsigned int number) { errno = static_cast<int>(number); }

} // namespace platform
