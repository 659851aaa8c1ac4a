#pragma once

#include "platform/platformapi.h"

#include <cstdint>

/// Time as waits and measurements need it: a clock that never goes back, whatever is done to the
/// time of day. Its start is arbitrary; compare only moments of one process.
namespace platform {

/// A time-out in milliseconds that never runs out.
constexpr unsigned int kWaitForever = 0xFFFFFFFFu;
/// The moment at which such a time-out ends.
constexpr std::uint64_t kNever = ~std::uint64_t{ 0 };

/// The moment, in nanoseconds.
PLATFORM_API std::uint64_t GetMonotonicTime() noexcept;

/// When a time-out that starts now ends; kNever for kWaitForever.
PLATFORM_API std::uint64_t GetDeadline(unsigned int milliseconds) noexcept;
/// What is left of it, rounded up; kWaitForever for kNever, and 0 once it is over.
PLATFORM_API unsigned int GetMillisecondsUntil(std::uint64_t deadline) noexcept;

/// The moment in the steps of the finest counter that the system has, and how many of them make a
/// second.
PLATFORM_API std::uint64_t GetPerformanceCount() noexcept;
PLATFORM_API std::uint64_t GetPerformanceFrequency() noexcept;

/// How long processors have worked for this process, all threads together, in nanoseconds. It goes
/// in steps: up to 16 ms on Windows.
PLATFORM_API std::uint64_t GetProcessorTime() noexcept;

} // namespace platform
