#include "platform/win32/threadstate.h"

#include "platform/eventwaiter.h"
#include "platform/platformclock.h"
#include "platform/platformtext.h"
#include "platform/stopguard.h"
#include "platform/threadvalue.h"
#include "platform/win32/platformwindows.h"

#include <process.h>

#include <cerrno>
#include <exception>
#include <utility>

namespace platform {
namespace {

    static_assert(Thread::kActive == STILL_ACTIVE);
    static_assert(INFINITE == kWaitForever);

    constexpr unsigned int kPatienceMs = 10'000; // with a thread that the system is to end

    /// Of each thread that is started here: its state, which hears of the end.
    const ThreadValue& stateOfThread()
    {
        static const ThreadValue s_state(
            [](void* state) { static_cast<ThreadState*>(state)->End(); });
        return s_state;
    }

    /// Debuggers of later systems show it; the earlier ones do not have the function.
    void nameCurrentThread(const std::wstring& name)
    {
        using SetDescription = HRESULT(WINAPI*)(HANDLE, PCWSTR);
        static const auto s_set = reinterpret_cast<SetDescription>(reinterpret_cast<void*>(
            GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "SetThreadDescription")));
        if (s_set != nullptr) {
            s_set(GetCurrentThread(), name.c_str());
        }
    }

} // namespace

StopGuard::StopGuard() noexcept
    : m_state(static_cast<ThreadState*>(stateOfThread().Get()))
{
    if (m_state != nullptr) {
        m_state->AddGuard();
    }
}

StopGuard::~StopGuard()
{
    if (m_state != nullptr) {
        m_state->RemoveGuard();
    }
}

std::uint32_t GetCurrentThreadId() noexcept { return ::GetCurrentThreadId(); }

ThreadState::ThreadState(Thread::Procedure procedure, void* argument, std::u16string_view name)
    : m_procedure(procedure)
    , m_argument(argument)
    , m_name(ToWide(name))
{
}

ThreadState::~ThreadState()
{
    if (m_handle != nullptr) {
        CloseHandle(m_handle);
    }
}

bool ThreadState::Create()
{
    m_ofThread = shared_from_this();
    // Wine may refuse a thread, as if the arguments were wrong, right after one was killed that had
    // not run yet; a moment later it makes it.
    constexpr int kAttempts = 10;
    for (int attempt = 0; m_handle == nullptr && attempt < kAttempts; ++attempt) {
        if (attempt != 0) {
            if (errno != EINVAL) {
                break;
            }
            Sleep(1);
        }
        const std::uintptr_t handle
            = _beginthreadex(nullptr, 0, run, this, CREATE_SUSPENDED, &m_id);
        m_handle = reinterpret_cast<void*>(handle);
    }
    if (m_handle == nullptr) {
        m_ofThread = nullptr;
    }
    return m_handle != nullptr;
}

void ThreadState::Close() { }

unsigned int __stdcall ThreadState::run(void* state)
{
    auto& self = *static_cast<ThreadState*>(state);
    if (!stateOfThread().Set(&self)) {
        self.End(); // without having run: the system has no place left
        return 1;
    }
    return self.runHere();
}

unsigned int ThreadState::runHere()
{
    nameCurrentThread(m_name);
    EventWaiter::NoteIn(m_waiter);
    // MinGW-w64's C++ library takes memory, under a lock of all threads, for what each thread has
    // of exceptions: now, when the thread cannot be stopped.
    (void)std::uncaught_exceptions();
    RemoveGuard();
    const unsigned int exitCode = m_procedure(m_argument);
    AddGuard(); // for good
    return exitCode != Thread::kActive ? exitCode : 1;
}

bool ThreadState::IsActive() const { return WaitForSingleObject(m_handle, 0) == WAIT_TIMEOUT; }

bool ThreadState::IsCurrent() const { return m_id == ::GetCurrentThreadId() && IsActive(); }

unsigned int ThreadState::GetExitCode() const
{
    // Asked first: a thread may have been killed with the code that stands for an active one.
    DWORD code = Thread::kActive;
    return !IsActive() && GetExitCodeThread(m_handle, &code) ? code : Thread::kActive;
}

EWait ThreadState::WaitForEnd(unsigned int milliseconds) const
{
    if (IsCurrent()) {
        return eW_TimedOut;
    }
    switch (WaitForSingleObject(m_handle, milliseconds)) {
    case WAIT_OBJECT_0:
        return eW_Signaled;
    case WAIT_TIMEOUT:
        return eW_TimedOut;
    default:
        return eW_Failed;
    }
}

/// Suspends another thread where it has no StopGuard.
bool ThreadState::stop()
{
    const std::uint64_t deadline = GetDeadline(kPatienceMs);
    for (;;) {
        // Left alone meanwhile: a thread that is suspended all the time does not come to its end.
        for (DWORD polls = 0; m_guards != 0 && IsActive(); ++polls) {
            if (GetMonotonicTime() > deadline) {
                ::SetLastError(ERROR_TIMEOUT);
                return false;
            }
            ::Sleep(polls < 100 ? 0 : 1);
        }
        if (::SuspendThread(m_handle) == static_cast<DWORD>(-1)) {
            return false;
        }
        // The system suspends in its own time; it has done so when it can tell where.
        CONTEXT context{};
        context.ContextFlags = CONTEXT_CONTROL;
        ::GetThreadContext(m_handle, &context);
        if (m_guards == 0) {
            return true;
        }
        ::ResumeThread(m_handle);
    }
}

bool ThreadState::Suspend()
{
    const bool ofItself = IsCurrent();
    {
        const StopGuard unstopped;
        const LockGuard guard(m_lock);
        if (!IsActive() || (!m_isSuspended && !ofItself && !stop())) {
            return false;
        }
        if (std::exchange(m_isSuspended, true)) {
            return true;
        }
    }
    // Whoever resumes this thread before it stands still tries again until it does.
    return !ofItself || ::SuspendThread(::GetCurrentThread()) != static_cast<DWORD>(-1);
}

bool ThreadState::Resume()
{
    const StopGuard unstopped;
    const LockGuard guard(m_lock);
    if (!m_isSuspended || !IsActive()) {
        return IsActive();
    }
    DWORD formerCount = 0;
    while ((formerCount = ::ResumeThread(m_handle)) == 0 && IsActive()) {
        ::SwitchToThread();
    }
    m_isSuspended = false;
    return formerCount != static_cast<DWORD>(-1) && formerCount != 0;
}

bool ThreadState::Kill(unsigned int exitCode)
{
    if (IsCurrent()) {
        ::TerminateThread(::GetCurrentThread(), exitCode);
    }
    {
        const StopGuard unstopped;
        const LockGuard guard(m_lock);
        if (!IsActive() || (!m_isSuspended && !stop()) || !::TerminateThread(m_handle, exitCode)
            || ::WaitForSingleObject(m_handle, kPatienceMs) != WAIT_OBJECT_0) {
            return false;
        }
    }
    if (EventWaiter* waiter = m_waiter.exchange(nullptr)) {
        EventWaiter::Abandon(*waiter); // events may have it in their lists
    }
    giveShareBack(); // the thread has not done it itself
    return true;
}

void ThreadState::End()
{
    EventWaiter::EndOfThread();
    giveShareBack();
}

void ThreadState::giveShareBack()
{
    if (!m_isGone.exchange(true)) {
        const std::shared_ptr<ThreadState> last = std::move(m_ofThread);
    }
}

bool ThreadState::SetPriority(int priority)
{
    if (IsActive() && !SetThreadPriority(m_handle, priority)) {
        return false;
    }
    m_priority = priority;
    return true;
}

int ThreadState::GetPriority() const
{
    const int priority = GetThreadPriority(m_handle);
    return IsActive() && priority != THREAD_PRIORITY_ERROR_RETURN ? priority : m_priority.load();
}

} // namespace platform
