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

// How many StopGuards the thread has, and whether it was to be stopped meanwhile.
extern constinit thread_local volatile unsigned int t_guards
    __attribute__((tls_model("initial-exec")));
extern constinit thread_local volatile bool t_stopIsDue __attribute__((tls_model("initial-exec")));

void StopNow() noexcept;

/// A StopGuard without a call, for what is done with each message.
class QuickStopGuard
{
public:
    QuickStopGuard() noexcept
    {
        t_guards = t_guards + 1;
        std::atomic_signal_fence(std::memory_order_seq_cst);
    }
    ~QuickStopGuard()
    {
        std::atomic_signal_fence(std::memory_order_seq_cst);
        t_guards = t_guards - 1;
        if (t_guards == 0 && t_stopIsDue) {
            StopNow();
        }
    }
    QuickStopGuard(const QuickStopGuard&) = delete;
    QuickStopGuard& operator=(const QuickStopGuard&) = delete;
};

} // namespace platform
