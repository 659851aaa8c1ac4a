#include "platform/platformwait.h"

#include "platform/platformclock.h"

#include <errno.h>
#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <climits>
#include <utility>

namespace platform {
namespace {

    static_assert(sizeof(std::atomic<std::uint32_t>) == sizeof(std::uint32_t)
        && std::atomic<std::uint32_t>::is_always_lock_free);

    void wake(const std::atomic<std::uint32_t>& word, int count)
    {
        const int before = errno;
        // Fails only for a word that is unmapped by now, and then nobody sleeps on it.
        syscall(SYS_futex, &word, FUTEX_WAKE_PRIVATE, count, nullptr, nullptr, 0);
        errno = before;
    }

} // namespace

EWordWait WaitOnWord(
    const std::atomic<std::uint32_t>& word, std::uint32_t expected, std::uint64_t deadline) noexcept
{
    // This form takes a moment, not a span, so that a wait after a needless waking ends in time.
    constexpr std::uint64_t kNanoseconds = 1'000'000'000;
    const timespec moment{ static_cast<time_t>(deadline / kNanoseconds),
        static_cast<long>(deadline % kNanoseconds) };
    const timespec* until = deadline != kNever ? &moment : nullptr;
    const int before = errno; // a caller may still want to know why another call failed
    const long result = syscall(SYS_futex, &word, FUTEX_WAIT_BITSET_PRIVATE, expected, until,
        nullptr, FUTEX_BITSET_MATCH_ANY);
    const int reason = result == 0 ? 0 : std::exchange(errno, before);
    if (reason == 0 || reason == EAGAIN || reason == EINTR) {
        return eWW_Woken;
    }
    return reason == ETIMEDOUT ? eWW_TimedOut : eWW_Failed;
}

void WakeOne(const std::atomic<std::uint32_t>& word) noexcept { wake(word, 1); }

void WakeAll(const std::atomic<std::uint32_t>& word) noexcept { wake(word, INT_MAX); }

} // namespace platform
