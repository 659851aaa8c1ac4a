#include "platform/platformclock.h"

namespace platform {

std::uint64_t GetDeadline(unsigned int milliseconds) noexcept
{
    constexpr std::uint64_t kNanoseconds = 1'000'000;
    return milliseconds == kWaitForever ? kNever : GetMonotonicTime() + milliseconds * kNanoseconds;
}

} // namespace platform
