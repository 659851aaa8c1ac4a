#include "platform/platformclock.h"

#include <windows.h>

namespace platform {
namespace {

    constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;

}

std::uint64_t GetMonotonicTime() noexcept
{
    static const std::uint64_t s_frequency = GetPerformanceFrequency();
    const std::uint64_t count = GetPerformanceCount();
    // Seconds and the rest by themselves: the product would not fit after some days.
    return count / s_frequency * kNanosecondsPerSecond
        + count % s_frequency * kNanosecondsPerSecond / s_frequency;
}

std::uint64_t GetPerformanceCount() noexcept
{
    LARGE_INTEGER count;
    QueryPerformanceCounter(&count); // never fails on the systems that we run on
    return static_cast<std::uint64_t>(count.QuadPart);
}

std::uint64_t GetPerformanceFrequency() noexcept
{
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return static_cast<std::uint64_t>(frequency.QuadPart);
}

} // namespace platform
