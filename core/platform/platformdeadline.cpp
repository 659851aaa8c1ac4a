#include "platform/platformclock.h"

#include <algorithm>

namespace platform {
namespace {

    constexpr std::uint64_t kNanoseconds = 1'000'000; // in a millisecond

} // namespace

std::uint64_t GetDeadline(unsigned int milliseconds) noexcept
{
    return milliseconds == kWaitForever ? kNever : GetMonotonicTime() + milliseconds * kNanoseconds;
}

unsigned int GetMillisecondsUntil(std::uint64_t deadline) noexcept
{
    if (deadline == kNever) {
        return kWaitForever;
    }
    const std::uint64_t now = GetMonotonicTime();
    const std::uint64_t left = deadline > now ? deadline - now : 0;
    return static_cast<unsigned int>(
        std::min<std::uint64_t>((left + kNanoseconds - 1) / kNanoseconds, kWaitForever - 1));
}

} // namespace platform
