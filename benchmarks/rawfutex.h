#pragma once

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstdint>

/// An automatic event as the system's call alone makes it: the limit of what waking a thread costs.
class RawFutex
{
public:
    void Set()
    {
        m_word.store(1, std::memory_order_release);
        syscall(SYS_futex, &m_word, FUTEX_WAKE_PRIVATE, 1, nullptr, nullptr, 0);
    }
    void Wait()
    {
        while (m_word.exchange(0, std::memory_order_acquire) == 0) {
            syscall(SYS_futex, &m_word, FUTEX_WAIT_PRIVATE, 0, nullptr, nullptr, 0);
        }
    }

private:
    std::atomic<std::uint32_t> m_word{ 0 };
};
