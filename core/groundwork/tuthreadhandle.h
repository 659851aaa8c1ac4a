#pragma once

#include "groundwork/cstring.h"
#include "groundwork/tucriticalsection.h"
#include "groundwork/tuthreadpriority.h"
#include "platform/platformthread.h"

#include <memory>

/// The handle of a system thread that several thread objects may share: what a TuThread keeps.
///
/// Ownership: copies share one handle; the last one closes it. The thread itself goes on.
/// Threads:   any thread may call any member, but for destruction. Set and Close change this object
///            only.
/// Failure:   without a handle the operations answer false, or what their comment says.
class GROUNDWORK_API TuThreadHandle
{
public:
    using Shared = std::shared_ptr<platform::Thread>;

    TuThreadHandle() = default;
    TuThreadHandle(const TuThreadHandle& other);
    TuThreadHandle& operator=(const TuThreadHandle&) = delete;

    /// Null while there is none. Whoever holds the answer keeps the handle open.
    Shared Get() const;
    void Set(Shared thread);
    /// Gives the handle up, and returns it.
    Shared Close();

    /// Applies a priority to the thread. Where that is refused, it is logged under `name`.
    [[nodiscard]] bool SetPriority(EThreadPriority priority, const CString& name) const;

private:
    mutable TuCriticalSection m_lock;
    Shared m_thread TU_GUARDED_BY(m_lock);
};
