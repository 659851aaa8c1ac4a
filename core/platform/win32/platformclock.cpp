#include "platform/platformclock.h"

#include "platform/win32/platformwindows.h"

namespace platform {
namespace {

    constexpr std::uint64_t kNanosecondsPerSecond = 1'000'000'000;

    std::uint64_t toNanoseconds(const FILETIME& time)
    {
        const auto ticks = std::uint64_t{ time.dwHighDateTime } << 32 | time.dwLowDateTime;
        return ticks * 100;
    }

} // namespace

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

std::uint64_t GetProcessorTime() noexcept
{
    FILETIME made;
    FILETIME ended;
    FILETIME inSystem;
    FILETIME inProgram;
    GetProcessTimes(GetCurrentProcess(), &made, &ended, &inSystem, &inProgram);
    return toNanoseconds(inSystem) + toNanoseconds(inProgram);
}

} // namespace platform
