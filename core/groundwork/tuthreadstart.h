#pragma once

#include "groundwork/tucriticalsection.h"
#include "groundwork/tuevent.h"

#include <optional>

/// The event by which a run tells a caller of TuThread::StartAndWait that it has started. It keeps
/// a copy, for the caller's own is gone as soon as it is set.
///
/// Threads: all operations may run on any thread at once.
class GROUNDWORK_API TuThreadStart
{
public:
    TuThreadStart() = default;
    TuThreadStart(const TuThreadStart&) = delete;
    TuThreadStart& operator=(const TuThreadStart&) = delete;

    /// False where another caller is waiting, or without memory.
    [[nodiscard]] bool Expect(const TuEvent& event) noexcept;
    /// Sets the event, where one is expected, and forgets it.
    void Signal() noexcept;

private:
    TuCriticalSection m_lock;
    std::optional<TuEvent> m_event TU_GUARDED_BY(m_lock);
};
