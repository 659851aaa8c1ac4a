#include "platform/platformthread.h"

#include "platform/platformclock.h"
#include "platform/posix/currentthread.h"
#include "platform/posix/threadstate.h"

#include <errno.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <new>
#include <utility>

namespace platform {

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

Thread::~Thread()
{
    if (m_state != nullptr) {
        m_state->Close();
    }
}

Thread::Thread(Thread&& other) noexcept
    : m_state(std::exchange(other.m_state, nullptr))
{
}

Thread& Thread::operator=(Thread&& other) noexcept
{
    if (this != &other) {
        Thread former(std::move(*this));
        m_state = std::exchange(other.m_state, nullptr);
    }
    return *this;
}

bool Thread::Create(Procedure procedure, void* argument, std::u16string_view name)
{
    ThreadState* state = nullptr;
    try {
        state = new ThreadState(procedure, argument, name);
    } catch (const std::bad_alloc&) {
        errno = ENOMEM;
        return false;
    }
    if (!state->Create()) {
        state->ReleaseUse(); // the thread's, which there is none of
        state->ReleaseUse();
        return false;
    }
    Thread former(std::move(*this));
    m_state = state;
    return true;
}

bool Thread::Suspend() { return m_state->Suspend(); }

bool Thread::Resume() { return m_state->Resume(); }

bool Thread::Kill(unsigned int exitCode) { return m_state->Kill(exitCode); }

bool Thread::IsActive() const { return m_state->IsActive(); }

unsigned int Thread::GetExitCode() const { return m_state->GetExitCode(); }

EWait Thread::WaitForEnd(unsigned int milliseconds) const
{
    return m_state->WaitForEnd(GetDeadline(milliseconds));
}

bool Thread::SetPriority(int priority) { return m_state->SetPriority(priority); }

int Thread::GetPriority() const { return m_state->GetPriority(); }

bool Thread::IsCurrent() const { return m_state->IsCurrent(); }

std::uint32_t Thread::GetId() const { return m_state->GetId(); }

void* Thread::GetNativeHandle() const
{
    return reinterpret_cast<void*>(m_state->GetThread()); // an address, where threads are POSIX's
}

} // namespace platform
