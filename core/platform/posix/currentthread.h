#pragma once

#include <atomic>
#include <cstdint>

/// What the sources of this folder know of the thread that they run on.
namespace platform {

/// A number that no other thread of the process has or had, 0 until it is asked for. Locks know
/// their holders by it: the kernel's numbers are given again, and change at a fork.
extern constinit thread_local std::uint32_t t_threadNumber
    __attribute__((tls_model("initial-exec")));

std::uint32_t MakeThreadNumber() noexcept;

inline std::uint32_t CurrentThreadNumber() noexcept
{
    const std::uint32_t number = t_threadNumber;
    return number != 0 ? number : MakeThreadNumber();
}

} // namespace platform
