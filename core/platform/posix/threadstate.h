#pragma once

#include "platform/platformlock.h"
#include "platform/platformthread.h"
#include "platform/posix/threadgate.h"

#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace platform {

class EventWaiter;
class MessageQueue;

/// What the handle of a thread and the thread itself share.
///
/// A new thread stands at its gate before it runs anything. Suspending and killing is done by a
/// signal, whose handler runs on the thread and stands at the gate; there the thread goes on, or is
/// left by the exit system call, which runs no destructors.
///
/// Ownership: shared by the handle and, until it has ended, the thread.
class ThreadState : public std::enable_shared_from_this<ThreadState>
{
public:
    ThreadState(Thread::Procedure procedure, void* argument, std::u16string_view name);

    [[nodiscard]] bool Create();
    /// The handle is given up: the thread, or what is left of it, ends by itself.
    void Close();

    [[nodiscard]] bool Suspend();
    [[nodiscard]] bool Resume();
    [[nodiscard]] bool Kill(unsigned int exitCode);
    bool IsActive() const { return m_ended.load(std::memory_order_acquire) == 0; }
    bool IsCurrent() const { return IsActive() && pthread_equal(m_thread, pthread_self()) != 0; }
    unsigned int GetExitCode() const;
    EWait WaitForEnd(unsigned int milliseconds) const;
    bool SetPriority(int priority);
    int GetPriority() const { return m_priority.load(std::memory_order_relaxed); }
    std::uint32_t GetId() const { return m_id; }
    /// The pthread_t, which is an address in the C libraries that we know.
    void* GetHandle() const { return reinterpret_cast<void*>(m_thread); }

    /// These two are called on the thread itself, the first by the signal handler.
    void StandAtGate();
    void End();

private:
    static void* run(void* state);
    void runHere();
    [[noreturn]] void leave();
    bool interrupt();
    void buryKilled();

    const Thread::Procedure m_procedure;
    void* const m_argument;
    const std::string m_name;
    pthread_t m_thread{}; // these two are set before the gate opens
    std::uint32_t m_id = 0;
    CriticalSection m_lock; // one at a time stops the thread
    CriticalSection m_endLock; // who holds it may rely on it that the thread does not end
    ThreadGate m_gate;
    std::atomic<std::uint32_t> m_ended{ 0 };
    std::atomic<unsigned int> m_exitCode{ Thread::kActive };
    std::atomic<unsigned int> m_killCode{ 0 };
    std::shared_ptr<ThreadState> m_ofThread; // the thread's own share
    std::atomic<bool> m_left{ false }; // was killed, so the thread has not given its share back
    std::atomic<bool> m_joined{ false };
    std::atomic<int> m_priority{ 0 };
    std::atomic<EventWaiter*> m_waiter{ nullptr };
    std::atomic<MessageQueue*> m_queue{ nullptr };
};

} // namespace platform
