#include "platform/platformclock.h"

#include <time.h>

namespace platform {
namespace {

    constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;

}

std::uint64_t GetMonotonicTime() noexcept
{
    timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * kNanosecondsPerSecond
        + static_cast<std::uint64_t>(now.tv_nsec);
}

std::uint64_t GetPerformanceCount() noexcept { return GetMonotonicTime(); }

std::uint64_t GetPerformanceFrequency() noexcept { return kNanosecondsPerSecond; }

} // namespace platform
