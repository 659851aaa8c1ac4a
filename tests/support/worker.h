#pragma once

#include "platform/platformthread.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>

/// A thread that does what a test tells it, step by step: locks of the data tree belong to the
/// thread that asks for them, so a script of several threads needs real ones.
class Worker
{
public:
    Worker()
        : m_thread([this] { run(); })
    {
        Do([this] { m_threadId = platform::GetCurrentThreadId(); });
    }
    ~Worker()
    {
        Finish();
        Begin(nullptr);
        m_thread.join();
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    unsigned int GetThreadId() const { return m_threadId; }

    void Do(std::function<void()> step)
    {
        Begin(std::move(step));
        Finish();
    }
    /// Returns while the step goes on. The one before has been finished.
    void Begin(std::function<void()> step)
    {
        const std::lock_guard guard(m_lock);
        m_step = std::move(step);
        m_isBusy = true;
        m_changed.notify_all();
    }
    void Finish()
    {
        std::unique_lock guard(m_lock);
        m_changed.wait(guard, [this] { return !m_isBusy; });
    }

private:
    void run()
    {
        for (;;) {
            std::function<void()> step;
            {
                std::unique_lock guard(m_lock);
                m_changed.wait(guard, [this] { return m_isBusy; });
                step = std::move(m_step);
            }
            if (step == nullptr) {
                return;
            }
            step();
            step = nullptr; // what it holds goes on this thread
            const std::lock_guard guard(m_lock);
            m_isBusy = false;
            m_changed.notify_all();
        }
    }

    std::mutex m_lock; // guards the two below
    std::function<void()> m_step; // none: the end
    bool m_isBusy = false;
    std::condition_variable m_changed;
    unsigned int m_threadId = 0;
    std::thread m_thread; // last: it uses all of the others
};
