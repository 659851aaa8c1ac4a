#pragma once

#include "groundwork/tuarray.h"
#include "groundwork/tuevent.h"
#include "groundwork/tusmartpointer.h"
#include "groundwork/tutimer.h"
#include "tabase/tadatamanager.h"
#include "tabase/tanode.h"

#include <optional>

/// One call of TryLockAndWait: passes over the requests of the thread, and waits between them.
class TaLockAttempt
{
public:
    /// For all requests of the calling thread, or for that of one handle alone.
    TaLockAttempt(TaDataManager& manager, unsigned int timeout, TaDataHandleBase* handle = nullptr);
    ~TaLockAttempt();
    TaLockAttempt(const TaLockAttempt&) = delete;
    TaLockAttempt& operator=(const TaLockAttempt&) = delete;

    TaDataManager::ELockStatus Run();

    // For other attempts, and for who gives back a lock; under the manager's lock.
    unsigned int GetThreadId() const { return m_threadId; }
    void Wake() { m_wake.Set(); }

private:
    using ELockStatus = TaDataManager::ELockStatus;

    /// Nothing where the attempt has to wait.
    std::optional<ELockStatus> pass();
    /// False for a handle that is no longer valid.
    bool findObstacles();
    bool findObstacle(TaDataHandleBase& handle);
    /// Drops the requests.
    ELockStatus fail(ELockStatus reason);
    void wait();

    TaDataManager& m_manager;
    const unsigned int m_threadId;
    const unsigned int m_timeout;
    TuTimer m_timer; // started once, so that many short waits cannot outlast the time-out
    TaDataHandleBase* const m_single; // null for all requests
    TuArray<TuSmartPointer<const TaNode>> m_obstacles; // they may leave the tree meanwhile
    bool m_isHeldBack = false; // by requests that wait longer
    bool m_isListed = false; // among those that wait
    bool m_isLast = false; // the time is over, and one more look is left
    bool m_hasTimedOut = false;
    bool m_hasFailed = false;
    TuEvent m_wake{ false }; // something has changed that no node's event tells
};
