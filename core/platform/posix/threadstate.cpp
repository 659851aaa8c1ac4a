#include "platform/posix/threadstate.h"

#include "platform/eventwaiter.h"
#include "platform/platformclock.h"
#include "platform/platformtext.h"
#include "platform/posix/currentthread.h"
#include "platform/posix/futex.h"
#include "platform/posix/messagequeue.h"
#include "platform/posix/threadpriority.h"
#include "platform/stopguard.h"
#include "platform/threadvalue.h"

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

    /// Of each thread that is started here: its state, which hears of the end.
    const ThreadValue& stateOfThread()
    {
        static const ThreadValue s_state(
            [](void* state) { static_cast<ThreadState*>(state)->End(); });
        return s_state;
    }

    int stopSignal() { return SIGRTMIN + 5; }

    void handleStopSignal(int)
    {
        const int before = errno;
        if (t_guards != 0) {
            t_stopIsDue = true;
        } else if (t_state != nullptr) { // a stranger may have sent the signal to another thread
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

    /// SIG_BLOCK or SIG_UNBLOCK, for the calling thread.
    void maskStopSignal(int how)
    {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, stopSignal());
        pthread_sigmask(how, &signals, nullptr);
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

constinit thread_local volatile unsigned int t_guards __attribute__((tls_model("initial-exec")))
= 0;
constinit thread_local volatile bool t_stopIsDue __attribute__((tls_model("initial-exec"))) = false;

constinit thread_local std::uint32_t t_threadNumber __attribute__((tls_model("initial-exec"))) = 0;

std::uint32_t MakeThreadNumber() noexcept
{
    static std::atomic<std::uint32_t> s_last = 0;
    do {
        t_threadNumber = (s_last.fetch_add(1, std::memory_order_relaxed) + 1) & 0x7FFFFFFFu;
    } while (t_threadNumber == 0);
    return t_threadNumber;
}

std::uint32_t GetCurrentThreadId() noexcept
{
    static constinit thread_local std::uint32_t t_id __attribute__((tls_model("initial-exec"))) = 0;
    // The only thread of a forked child has a new number.
    [[maybe_unused]] static const int s_atFork = pthread_atfork(nullptr, nullptr, [] { t_id = 0; });
    if (t_id == 0) {
        t_id = static_cast<std::uint32_t>(syscall(SYS_gettid));
    }
    return t_id;
}

void StopNow() noexcept
{
    t_stopIsDue = false;
    pthread_kill(pthread_self(), stopSignal());
}

StopGuard::StopGuard() noexcept
{
    t_guards = t_guards + 1;
    std::atomic_signal_fence(std::memory_order_seq_cst);
}

StopGuard::~StopGuard()
{
    std::atomic_signal_fence(std::memory_order_seq_cst);
    t_guards = t_guards - 1;
    if (t_guards == 0 && t_stopIsDue) {
        StopNow();
    }
}

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
    const int failure = installHandler() ? pthread_create(&m_thread, nullptr, run, this) : EAGAIN;
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
        // It cannot be joined by its own last destructors.
        if (IsActive() || pthread_join(m_thread, nullptr) != 0) {
            pthread_detach(m_thread);
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
    if (MessageQueue* queue = m_queue.exchange(nullptr)) {
        MessageQueue::Abandon(*queue);
    }
    m_ofThread = nullptr;
}

void* ThreadState::run(void* state)
{
    auto& self = *static_cast<ThreadState*>(state);
    if (stateOfThread().Set(&self)) {
        self.runHere();
    } else {
        self.End(); // without having run: the system has no place left
    }
    return nullptr;
}

void ThreadState::runHere()
{
    // The first stand needs no signal, and must not be disturbed by one.
    maskStopSignal(SIG_BLOCK);
    t_state = this;
    pthread_setname_np(pthread_self(), m_name.c_str());
    EventWaiter::NoteIn(m_waiter);
    MessageQueue::NoteIn(m_queue);
    StandAtGate();
    maskStopSignal(SIG_UNBLOCK);
    const unsigned int exitCode = m_procedure(m_argument);
    t_guards = t_guards + 1; // for good: what is left is the C library's, with its locks
    m_exitCode = exitCode != Thread::kActive ? exitCode : 1;
}

void ThreadState::StandAtGate()
{
    // Where it has ended, the signal came when all was done.
    if (IsActive() && !m_gate.Stand()) {
        leave();
    }
}

void ThreadState::End()
{
    // The procedure may have been left by pthread_exit().
    unsigned int active = Thread::kActive;
    m_exitCode.compare_exchange_strong(active, 1);
    EventWaiter::EndOfThread();
    MessageQueue::EndOfThread();
    {
        // Whoever holds the lock may rely on it that the thread is still there.
        const StopGuard unstopped;
        const LockGuard guard(m_endLock);
        m_ended.store(1, std::memory_order_release);
    }
    WakeAll(m_ended);
    m_gate.Leave();
    t_state = nullptr;
    const std::shared_ptr<ThreadState> last = std::move(m_ofThread);
}

/// Somebody else gives back the thread's share of this object.
void ThreadState::leave()
{
    t_state = nullptr;
    m_exitCode = m_killCode.load();
    m_left = true;
    m_ended.store(1, std::memory_order_release);
    // Nothing of this object may be used any more but the address of the word.
    WakeAll(m_ended);
    for (;;) {
        syscall(SYS_exit, 0);
    }
}

bool ThreadState::interrupt()
{
    const int failure = pthread_kill(m_thread, stopSignal());
    if (failure != 0) {
        errno = failure;
    }
    return failure == 0;
}

bool ThreadState::Suspend()
{
    const bool ofItself = IsCurrent();
    if (!ofItself) {
        const StopGuard unstopped;
        const LockGuard guard(m_lock);
        if (!IsActive()) {
            errno = ESRCH;
            return false;
        }
        if (m_gate.Close() && !interrupt()) {
            m_gate.Open();
            return false;
        }
        if (!m_gate.WaitUntilItStands(GetDeadline(kPatienceMs))) {
            m_gate.Open();
            errno = ETIMEDOUT;
            return false;
        }
        return IsActive();
    }
    {
        const StopGuard unstopped;
        const LockGuard guard(m_lock);
        (void)m_gate.Close();
    }
    // By way of the handler, so that the signal does not come while the thread stands.
    return interrupt();
}

bool ThreadState::Resume()
{
    const StopGuard unstopped;
    const LockGuard guard(m_lock);
    if (!IsActive()) {
        errno = ESRCH;
        return false;
    }
    m_gate.Open();
    return true;
}

bool ThreadState::Kill(unsigned int exitCode)
{
    if (IsCurrent()) {
        MessageQueue::EndOfThread(); // perhaps nobody buries it for long
        m_killCode = exitCode;
        leave();
    }
    {
        const StopGuard unstopped;
        const LockGuard guard(m_lock);
        if (!IsActive()) {
            errno = ESRCH;
            return false;
        }
        m_killCode = exitCode;
        m_gate.OpenToKill();
        // One that stood at the gate may be gone already.
        if (!interrupt() && IsActive()) {
            return false;
        }
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
    const StopGuard unstopped;
    const LockGuard guard(m_endLock); // so its number is not another's yet
    if (IsActive() && !ApplyThreadPriority(m_id, priority)) {
        return false;
    }
    m_priority = priority;
    return true;
}

} // namespace platform
