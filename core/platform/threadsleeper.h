#pragma once

#include "platform/platformevent.h"

#include <atomic>
#include <cstdint>

namespace platform {

/// What one thread sleeps on until another lets it through. Whoever does that first leaves a
/// number, and is the only one; then he wakes the sleeper.
///
/// On POSIX systems the number is in the word that the thread sleeps on, and waking takes no more
/// than the word's address: the sleeper may be gone by then. Windows' waits on a word keep their
/// books on the stack of the thread, which does not survive that it is killed; so there it is an
/// event of the system, and the sleeper goes on only when that has been set.
///
/// Threads: Release and Wake are for other threads, the rest for the one that sleeps.
class ThreadSleeper
{
public:
    static constexpr std::uint32_t kAsleep = 0;
    static constexpr std::uint32_t kGone = 0xFFFFFFFFu; // not (any more) waiting

#if defined(_WIN32)
    ThreadSleeper() noexcept;
    ~ThreadSleeper();
#else
    ThreadSleeper() noexcept = default;
#endif
    ThreadSleeper(const ThreadSleeper&) = delete;
    ThreadSleeper& operator=(const ThreadSleeper&) = delete;

    /// Whether the system had what it takes.
    bool IsUsable() const noexcept;

    /// From here on it can be let through.
    void Begin() noexcept { m_word.store(kAsleep, std::memory_order_relaxed); }
    /// Lets the sleeper through with `number`, unless it is through already, or gone. Who gets true
    /// calls Wake, and touches nothing of the sleeper but by that; but for the sleeper itself,
    /// which then does not sleep.
    [[nodiscard]] bool Release(std::uint32_t number) noexcept
    {
        std::uint32_t word = kAsleep;
        return m_word.compare_exchange_strong(
            word, number, std::memory_order_acq_rel, std::memory_order_acquire);
    }
    void Wake() noexcept;
    /// Returns when another thread has let this one through, or at the deadline, or where the
    /// system refuses. In these two cases, nobody can let it through any more.
    EWait Sleep(std::uint64_t deadline) noexcept;
    /// The number, or kGone.
    std::uint32_t GetNumber() const noexcept { return m_word.load(std::memory_order_relaxed); }
    void Abandon() noexcept { m_word.store(kGone, std::memory_order_release); }

private:
    std::atomic<std::uint32_t> m_word{ kGone };
#if defined(_WIN32)
    void* m_event; // automatic; null where the system had none
#endif
};

} // namespace platform
