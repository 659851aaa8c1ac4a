#include "platform/posix/threadstate.h"

#include "platform/eventwaiter.h"
#include "platform/platformclock.h"
#include "platform/platformtext.h"
#include "platform/platformwait.h"
#include "platform/posix/currentthread.h"
#include "platform/posix/threadpriority.h"

#include <errno.h>
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <utility>

namespace platform {
namespace {

    constexpr unsigned int kPatienceMs = 10'000; // with a thread that blocks the signal

    constinit thread_local ThreadState* t_state __attribute__((tls_model("initial-exec")))
    = nullptr;

    /// Calls End() when the thread's own objects are destroyed. Not an object of the thread itself:
    /// the C library would note its destructor in memory that is lost when the thread is killed.
    struct SEndOfThreads
    {
        SEndOfThreads()
        {
            isMade = pthread_key_create(&key, [](void* state) {
                static_cast<ThreadState*>(state)->End();
            }) == 0;
        }

        pthread_key_t key{};
        bool isMade;
    };

    const SEndOfThreads& endOfThreads()
    {
        static const SEndOfThreads s_end;
        return s_end;
    }

    int stopSignal() { return SIGRTMIN + 5; }

    void handleStopSignal(int)
    {
        const int before = errno;
        if (t_state != nullptr) { // a stranger may have sent the signal to another thread
            t_state->StandAtGate();
        }
        errno = before;
    }

    bool installHandler()
    {
        static const bool s_installed = [] {
            struct sigaction action = {};
            action.sa_handler = handleStopSignal;
            action.sa_flags = SA_RESTART;
            sigemptyset(&action.sa_mask);
            return sigaction(stopSignal(), &action, nullptr) == 0;
        }();
        return s_installed;
    }

    void unblockSignal()
    {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, stopSignal());
        pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
    }

    /// The longest start that the system takes, without half a character.
    std::string shortened(std::string name)
    {
        constexpr std::size_t kLongest = 15;
        if (name.size() > kLongest) {
            std::size_t end = kLongest;
            while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80) {
                --end;
            }
            name.resize(end);
        }
        return name;
    }

    /// The kernel's number of a thread that has not run yet: it is a part of the number of the
    /// clock that counts the thread's time.
    std::uint32_t idOf(pthread_t thread)
    {
        clockid_t clock = 0;
        return pthread_getcpuclockid(thread, &clock) == 0 ? ~static_cast<std::uint32_t>(clock >> 3)
                                                          : 0;
    }

} // namespace

constinit thread_local std::uint32_t t_threadId __attribute__((tls_model("initial-exec"))) = 0;

std::uint32_t FindCurrentThreadId() noexcept
{
    // The only thread of a forked child has a new number.
    [[maybe_unused]] static const int s_atFork
        = pthread_atfork(nullptr, nullptr, [] { t_threadId = 0; });
    t_threadId = static_cast<std::uint32_t>(syscall(SYS_gettid));
    return t_threadId;
}

std::uint32_t GetCurrentThreadId() noexcept { return CurrentThreadId(); }

ThreadState::ThreadState(Thread::Procedure procedure, void* argument, std::u16string_view name)
    : m_procedure(procedure)
    , m_argument(argument)
    , m_name(shortened(ToUtf8(name)))
{
}

bool ThreadState::Create()
{
    // The new thread inherits what the system has given to this one.
    m_priority = t_state != nullptr ? t_state->GetPriority() : 0;
    m_ofThread = shared_from_this();
    const int failure = installHandler() && endOfThreads().isMade
        ? pthread_create(&m_thread, nullptr, run, this)
        : EAGAIN;
    if (failure != 0) {
        m_ofThread = nullptr;
        errno = failure;
        return false;
    }
    m_id = idOf(m_thread);
    return true;
}

void ThreadState::Close()
{
    buryKilled();
    if (!m_joined.exchange(true)) {
        if (IsActive()) {
            pthread_detach(m_thread);
        } else {
            pthread_join(m_thread, nullptr);
        }
    }
}

/// Gives back the share that a killed thread had. Its waiter stays: events may have it in their
/// lists. So does its stack: were the thread joined, the C library would give the next thread that
/// stack, and with it the values that the dead one has left under its pthread keys.
void ThreadState::buryKilled()
{
    if (!m_left.exchange(false)) {
        return;
    }
    m_joined = true;
    if (EventWaiter* waiter = m_waiter.exchange(nullptr)) {
        EventWaiter::Abandon(*waiter);
    }
    m_ofThread = nullptr;
}

void* ThreadState::run(void* state)
{
    t_state = static_cast<ThreadState*>(state);
    pthread_setspecific(endOfThreads().key, state);
    t_state->runHere();
    return nullptr;
}

void ThreadState::runHere()
{
    unblockSignal();
    pthread_setname_np(pthread_self(), m_name.c_str());
    EventWaiter::NoteIn(m_waiter);
    StandAtGate();
    const unsigned int exitCode = m_procedure(m_argument);
    m_exitCode = exitCode != Thread::kActive ? exitCode : 1;
}

void ThreadState::StandAtGate()
{
    if (!IsActive()) {
        return; // the signal came when all was done
    }
    m_answered.store(1, std::memory_order_release);
    WakeAll(m_answered);
    std::uint32_t gate = eG_Closed;
    while ((gate = m_gate.load(std::memory_order_acquire)) == eG_Closed) {
        (void)WaitOnWord(m_gate, eG_Closed, kNever);
    }
    if (gate == eG_Kill) {
        leave();
    }
}

void ThreadState::End()
{
    // The procedure may have been left by pthread_exit().
    unsigned int active = Thread::kActive;
    m_exitCode.compare_exchange_strong(active, 1);
    EventWaiter::EndOfThread();
    m_ended.store(1, std::memory_order_release);
    WakeAll(m_ended);
    m_answered.store(1, std::memory_order_release);
    WakeAll(m_answered);
    t_state = nullptr;
    const std::shared_ptr<ThreadState> last = std::move(m_ofThread);
}

/// Somebody else gives back the thread's share of this object.
void ThreadState::leave()
{
    m_exitCode = m_killCode.load();
    m_left = true;
    m_ended.store(1, std::memory_order_release);
    // Nothing of this object may be used any more but the address of the word.
    WakeAll(m_ended);
    for (;;) {
        syscall(SYS_exit, 0);
    }
}

bool ThreadState::interrupt(EGate gate)
{
    m_answered = 0;
    m_gate.store(gate, std::memory_order_release);
    WakeAll(m_gate); // it may stand there already
    const int failure = pthread_kill(m_thread, stopSignal());
    if (failure != 0) {
        errno = failure;
    }
    return failure == 0;
}

bool ThreadState::Suspend()
{
    const bool ofItself = IsCurrent();
    {
        const LockGuard guard(m_lock);
        if (!IsActive()) {
            errno = ESRCH;
            return false;
        }
        if (m_gate == eG_Closed) {
            return true;
        }
        if (!ofItself) {
            if (!interrupt(eG_Closed)) {
                return false;
            }
            const std::uint64_t deadline = GetDeadline(kPatienceMs);
            while (m_answered == 0) {
                if (WaitOnWord(m_answered, 0, deadline) == eWW_TimedOut) {
                    m_gate = eG_Open;
                    errno = ETIMEDOUT;
                    return false;
                }
            }
            return IsActive();
        }
        m_gate = eG_Closed;
    }
    StandAtGate();
    return true;
}

bool ThreadState::Resume()
{
    const LockGuard guard(m_lock);
    if (!IsActive() || m_gate == eG_Kill) {
        errno = ESRCH;
        return false;
    }
    m_gate.store(eG_Open, std::memory_order_release);
    WakeAll(m_gate);
    return true;
}

bool ThreadState::Kill(unsigned int exitCode)
{
    const bool ofItself = IsCurrent();
    {
        const LockGuard guard(m_lock);
        if (!IsActive()) {
            errno = ESRCH;
            return false;
        }
        m_killCode = exitCode;
        if (!ofItself && !interrupt(eG_Kill)) {
            return false;
        }
    }
    if (ofItself) {
        leave();
    }
    if (WaitForEnd(kPatienceMs) != eW_Signaled) {
        errno = ETIMEDOUT;
        return false;
    }
    buryKilled();
    return true;
}

unsigned int ThreadState::GetExitCode() const
{
    return IsActive() ? Thread::kActive : m_exitCode.load();
}

EWait ThreadState::WaitForEnd(unsigned int milliseconds) const
{
    const std::uint64_t deadline = GetDeadline(milliseconds);
    while (IsActive()) {
        const EWordWait wait = IsCurrent() ? eWW_TimedOut : WaitOnWord(m_ended, 0, deadline);
        if (wait != eWW_Woken && IsActive()) {
            return wait == eWW_TimedOut ? eW_TimedOut : eW_Failed;
        }
    }
    return eW_Signaled;
}

bool ThreadState::SetPriority(int priority)
{
    if (IsActive() && !ApplyThreadPriority(m_id, priority)) {
        return false;
    }
    m_priority = priority;
    return true;
}

} // namespace platform
