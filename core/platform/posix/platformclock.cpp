#include "platform/platformclock.h"

#include <time.h>

namespace platform {
namespace {

    constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;

    std::uint64_t read(clockid_t clock)
    {
        timespec now;
        clock_gettime(clock, &now);
        return static_cast<std::uint64_t>(now.tv_sec) * kNanosecondsPerSecond
            + static_cast<std::uint64_t>(now.tv_nsec);
    }

} // namespace

std::uint64_t GetMonotonicTime() noexcept { return read(CLOCK_MONOTONIC); }

std::uint64_t GetPerformanceCount() noexcept { return GetMonotonicTime(); }

std::uint64_t GetPerformanceFrequency() noexcept { return kNanosecondsPerSecond; }

std::uint64_t GetProcessorTime() noexcept { return read(CLOCK_PROCESS_CPUTIME_ID); }

} // namespace platform
