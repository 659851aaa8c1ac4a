#include "platform/platformthread.h"

#if defined(_WIN32)
#include "platform/win32/threadstate.h"
#else
#include "platform/posix/threadstate.h"
#endif

#include <new>
#include <utility>

namespace platform {

Thread::~Thread()
{
    if (m_state != nullptr) {
        m_state->Close();
    }
}

Thread& Thread::operator=(Thread&& other) noexcept
{
    if (this != &other) {
        const Thread former(std::move(*this));
        m_state = std::move(other.m_state);
    }
    return *this;
}

bool Thread::Create(Procedure procedure, void* argument, std::u16string_view name)
{
    std::shared_ptr<ThreadState> state;
    try {
        state = std::make_shared<ThreadState>(procedure, argument, name);
    } catch (const std::bad_alloc&) {
        return false;
    }
    if (!state->Create()) {
        return false;
    }
    const Thread former(std::move(*this));
    m_state = std::move(state);
    return true;
}

bool Thread::Suspend() { return m_state->Suspend(); }

bool Thread::Resume() { return m_state->Resume(); }

bool Thread::Kill(unsigned int exitCode) { return m_state->Kill(exitCode); }

bool Thread::IsActive() const { return m_state->IsActive(); }

unsigned int Thread::GetExitCode() const { return m_state->GetExitCode(); }

EWait Thread::WaitForEnd(unsigned int milliseconds) const
{
    return m_state->WaitForEnd(milliseconds);
}

bool Thread::SetPriority(int priority) { return m_state->SetPriority(priority); }

int Thread::GetPriority() const { return m_state->GetPriority(); }

bool Thread::IsCurrent() const { return m_state->IsCurrent(); }

std::uint32_t Thread::GetId() const { return m_state->GetId(); }

void* Thread::GetNativeHandle() const { return m_state->GetHandle(); }

} // namespace platform
