#pragma once

#include <cstdint>

/// What the sources of this folder know of the thread that they run on.
namespace platform {

/// Asks the kernel once, and again in the child after a fork.
std::uint32_t FindCurrentThreadId() noexcept;

/// 0 until it is known. Found without a call: locks ask for it all the time.
extern constinit thread_local std::uint32_t t_threadId __attribute__((tls_model("initial-exec")));

inline std::uint32_t CurrentThreadId() noexcept
{
    const std::uint32_t id = t_threadId;
    return id != 0 ? id : FindCurrentThreadId();
}

} // namespace platform
