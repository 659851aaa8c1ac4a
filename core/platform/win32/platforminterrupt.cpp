#include "platform/platforminterrupt.h"

#include "platform/platformlock.h"
#include "platform/win32/platformwindows.h"

#include <utility>

namespace platform {
namespace {

    /// The system's handler gets no argument: it finds the watch here. Never destroyed, for the
    /// handler may be called until the end.
    struct SWatched
    {
        CriticalSection lock; // held during the call
        const std::function<void()>* onInterrupt TU_GUARDED_BY(lock) = nullptr;
    };

    SWatched& getWatched()
    {
        static SWatched& s_watched = *new SWatched();
        return s_watched;
    }

    BOOL WINAPI handle(DWORD event)
    {
        if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
            return FALSE;
        }
        SWatched& watched = getWatched();
        const LockGuard guard(watched.lock);
        if (watched.onInterrupt == nullptr) {
            return FALSE;
        }
        (*watched.onInterrupt)();
        return TRUE;
    }

} // namespace

struct InterruptWatch::SState
{
    std::function<void()> onInterrupt;
};

InterruptWatch::InterruptWatch(std::function<void()> onInterrupt)
{
    SWatched& watched = getWatched();
    auto state = std::make_unique<SState>();
    state->onInterrupt = std::move(onInterrupt);
    const LockGuard guard(watched.lock);
    if (watched.onInterrupt == nullptr && ::SetConsoleCtrlHandler(&handle, TRUE)) {
        watched.onInterrupt = &state->onInterrupt;
        m_state = std::move(state);
    }
}

InterruptWatch::~InterruptWatch()
{
    if (m_state != nullptr) {
        ::SetConsoleCtrlHandler(&handle, FALSE);
        SWatched& watched = getWatched();
        const LockGuard guard(watched.lock);
        watched.onInterrupt = nullptr;
    }
}

} // namespace platform
