#include "platform/platformwait.h"

#include "platform/platformclock.h"

#include <windows.h>

#include <algorithm>

namespace platform {
namespace {

    /// The time-out for a wait until `deadline`, rounded up: a wait never ends early.
    DWORD millisecondsUntil(std::uint64_t deadline)
    {
        static_assert(INFINITE == kWaitForever);
        constexpr std::uint64_t kNanoseconds = 1'000'000;
        if (deadline == kNever) {
            return INFINITE;
        }
        const std::uint64_t now = GetMonotonicTime();
        const std::uint64_t left = deadline > now ? deadline - now : 0;
        return static_cast<DWORD>(
            std::min<std::uint64_t>((left + kNanoseconds - 1) / kNanoseconds, INFINITE - 1));
    }

    /// The system's functions take the word as what it is, memory.
    void* memoryOf(const std::atomic<std::uint32_t>& word)
    {
        return const_cast<std::atomic<std::uint32_t>*>(&word);
    }

} // namespace

EWordWait WaitOnWord(
    const std::atomic<std::uint32_t>& word, std::uint32_t expected, std::uint64_t deadline) noexcept
{
    static_assert(sizeof(word) == sizeof(expected));
    const DWORD before = GetLastError(); // a caller may still want to know why another call failed
    if (WaitOnAddress(memoryOf(word), &expected, sizeof(expected), millisecondsUntil(deadline))) {
        return eWW_Woken;
    }
    const DWORD reason = GetLastError();
    SetLastError(before);
    if (reason != ERROR_TIMEOUT) {
        return eWW_Failed;
    }
    // The system's clock ticks more coarsely than ours: it may have been a little early.
    return GetMonotonicTime() < deadline ? eWW_Woken : eWW_TimedOut;
}

void WakeOne(const std::atomic<std::uint32_t>& word) noexcept
{
    WakeByAddressSingle(memoryOf(word));
}

void WakeAll(const std::atomic<std::uint32_t>& word) noexcept { WakeByAddressAll(memoryOf(word)); }

} // namespace platform
