#include "groundwork/tuthreadhandle.h"

#include "groundwork/tulatesterror.h"
#include "groundwork/tuloglistenermanager.h"
#include "platform/stopguard.h"

#include <new>
#include <string>
#include <utility>

namespace {

// Where the log says that a priority was refused.
constexpr const char16_t* kSource = u"core/groundwork/tuthread";
constexpr unsigned int kPriorityLine = 679;

/// "(%s) %d - %s", with the name of the thread, the error and its message.
CString describe(const CString& name, const TuLatestError& error)
{
    return u"(" + name + u") "
        + CString::FromUtf8(std::to_string(static_cast<int>(error.GetNumber()))) + u" - "
        + error.GetMessageText();
}

} // namespace

TuThreadHandle::TuThreadHandle(const TuThreadHandle& other)
    : m_thread(other.Get())
{
}

TuThreadHandle::Shared TuThreadHandle::Get() const
{
    const platform::StopGuard unstopped;
    const TuCriticalSectionAuto guard(m_lock);
    return m_thread;
}

void TuThreadHandle::Set(Shared thread)
{
    const platform::StopGuard unstopped;
    const TuCriticalSectionAuto guard(m_lock);
    m_thread.swap(thread); // the former one is closed when the lock is left
}

TuThreadHandle::Shared TuThreadHandle::Close()
{
    const platform::StopGuard unstopped;
    const TuCriticalSectionAuto guard(m_lock);
    return std::exchange(m_thread, nullptr);
}

bool TuThreadHandle::SetPriority(EThreadPriority priority, const CString& name) const
{
    const Shared thread = Get();
    if (thread == nullptr || thread->SetPriority(priority)) {
        return true;
    }
    try {
        const TuLatestError error;
        TuLogListenerManager::GetInstance().NotifyListeners(
            eLL_Error, kSource, kPriorityLine, describe(name, error));
    } catch (const std::bad_alloc&) { // then nobody hears of it
    }
    return false;
}
