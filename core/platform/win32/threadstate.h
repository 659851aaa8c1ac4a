#pragma once

#include "platform/platformlock.h"
#include "platform/platformthread.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace platform {

class EventWaiter;

/// What the handle of a thread and the thread itself share.
///
/// Ownership: shared by the handle and, until it has ended, the thread.
class ThreadState : public std::enable_shared_from_this<ThreadState>
{
public:
    ThreadState(Thread::Procedure procedure, void* argument, std::u16string_view name);
    ~ThreadState();
    ThreadState(const ThreadState&) = delete;
    ThreadState& operator=(const ThreadState&) = delete;

    [[nodiscard]] bool Create();
    /// The handle is given up: the thread, or what is left of it, ends by itself.
    void Close();

    [[nodiscard]] bool Suspend();
    [[nodiscard]] bool Resume();
    [[nodiscard]] bool Kill(unsigned int exitCode);
    bool IsActive() const;
    bool IsCurrent() const;
    unsigned int GetExitCode() const;
    EWait WaitForEnd(unsigned int milliseconds) const;
    bool SetPriority(int priority);
    int GetPriority() const;
    std::uint32_t GetId() const { return m_id; }
    void* GetHandle() const { return m_handle; }

    /// Called on the thread itself, the last at its very end.
    void AddGuard() { ++m_guards; }
    void RemoveGuard() { --m_guards; }
    void End();

private:
    static unsigned int __stdcall run(void* state);
    unsigned int runHere();
    bool stop();
    void giveShareBack();

    const Thread::Procedure m_procedure;
    void* const m_argument;
    const std::wstring m_name;
    void* m_handle = nullptr; // these two are set before the thread is resumed
    std::uint32_t m_id = 0;
    CriticalSection m_lock; // one at a time suspends and resumes
    bool m_isSuspended TU_GUARDED_BY(m_lock) = true;
    std::shared_ptr<ThreadState> m_ofThread; // the thread's own share
    std::atomic<bool> m_isGone{ false }; // that one has been given back
    /// StopGuards of the thread, and one while it is in the hands of the system: before its
    /// procedure and behind it, where it may hold the locks of the loader and of the heap.
    std::atomic<unsigned int> m_guards{ 1 };
    std::atomic<int> m_priority{ 0 };
    std::atomic<EventWaiter*> m_waiter{ nullptr };
};

} // namespace platform
