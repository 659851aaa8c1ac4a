#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

/// A gate that opens when `count` threads have arrived; used once. It stands for the latch
/// of the standard library, which loses wake-ups where there is no futex (MinGW-w64), as
/// std::atomic::wait does.
class TestLatch
{
public:
    explicit TestLatch(std::ptrdiff_t count)
        : m_missing(count)
    {
    }

    void count_down()
    {
        const std::lock_guard guard(m_lock);
        if (--m_missing == 0) {
            m_open.notify_all();
        }
    }
    void wait()
    {
        std::unique_lock guard(m_lock);
        m_open.wait(guard, [this] { return m_missing == 0; });
    }
    void arrive_and_wait()
    {
        count_down();
        wait();
    }

private:
    std::mutex m_lock; // guards m_missing
    std::condition_variable m_open;
    std::ptrdiff_t m_missing;
};
