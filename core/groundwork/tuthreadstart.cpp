#include "groundwork/tuthreadstart.h"

#include "platform/stopguard.h"

#include <new>

bool TuThreadStart::Expect(const TuEvent& event) noexcept
{
    const platform::StopGuard unstopped;
    const TuCriticalSectionAuto guard(m_lock);
    if (m_event.has_value()) {
        return false;
    }
    try {
        m_event = event;
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

void TuThreadStart::Signal() noexcept
{
    // A thread that was killed between the two steps would leave its caller waiting.
    const platform::StopGuard unstopped;
    const TuCriticalSectionAuto guard(m_lock);
    if (m_event.has_value()) {
        m_event->Set();
        m_event.reset();
    }
}
