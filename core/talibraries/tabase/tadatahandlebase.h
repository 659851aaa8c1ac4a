#pragma once

#include "tabase/tabaseapi.h"

#include <atomic>

class TaDataManager;
class TaLockAttempt;
class TaNode;

/// A thread's wish to read or to write a node, and its lock once the wish has been granted.
///
/// Making a handle files the request with the manager; TaDataManager::TryLockAndWait grants all
/// requests of the thread, or none. A failed attempt drops them: make the handles anew for another.
/// Two things happen without an attempt: a thread that holds a fitting lock on the very node is
/// granted at once, and when a thread gives back its last lock, its requests that are not granted
/// yet are dropped, too.
///
/// A class of handles calls requestLock at the end of its constructors, when getNode answers, and
/// leaveManager in its destructor, while it still does. TaDataHandleLockOnly is the usual one.
///
/// Ownership: who made the handle. It may outlive its manager, and then has no access.
/// Threads:   the lock belongs to the thread that made the handle, wherever it is given back: a
///            handle may be moved to, and destroyed on, another thread. A thread that ends leaves
///            its locks to its handles; the system may give its number to a new thread, which then
///            holds them. One thread at a time uses a handle, and none while its manager is being
///            destroyed.
/// Failure:   none from the questions.
class TABASE_API TaDataHandleBase
{
public:
    enum EAccessRights
    {
        eAR_Read = 0,
        eAR_Write = 1,
    };

    TaDataHandleBase(const TaDataHandleBase&) = delete;
    TaDataHandleBase& operator=(const TaDataHandleBase&) = delete;
    virtual ~TaDataHandleBase();

protected:
    virtual EAccessRights getAccessRights() = 0;
    /// Whether the handle can still be granted.
    virtual bool isValid() const = 0;
    virtual const TaNode* getNode() const = 0;

public:
    EAccessRights GetAccessRights() { return getAccessRights(); }
    bool IsValid() const { return isValid(); }
    bool IsAccessGranted() const { return m_accessGranted.load(); }
    /// Whether somebody has worked with the handle, which its class tells by setUsed.
    bool IsUsed() const { return m_used; }

protected:
    /// A handle of no manager has no access, and no node.
    TaDataHandleBase() = default;
    explicit TaDataHandleBase(TaDataManager& manager);

    /// Files the request. Throws TuExceptionPreconditionViolation for a node of another manager.
    void requestLock();
    /// Gives back a granted lock.
    void releaseLock() noexcept;
    /// For destructors: withdraws the request, or gives back the lock, and leaves the manager.
    void leaveManager() noexcept;
    /// For moves: takes over the request or the lock, the thread and the manager of `other`, whose
    /// node this handle has already. This one has neither lock nor request.
    void takeOver(TaDataHandleBase& other) noexcept;

    unsigned int getThreadID() const { return m_threadId; }
    void setUsed() { m_used = true; }

private:
    friend class TaDataManager;
    friend class TaLockAttempt;
    friend class TaDataTreeProbe; // the tests look at the books with it

    // But for m_used, guarded by the manager's lock.
    TaDataManager* m_manager = nullptr;
    unsigned int m_threadId = 0;
    std::atomic<bool> m_accessGranted{ false };
    bool m_used = false;
    bool m_isListed = false; // among all handles of the manager
    bool m_isHolding = false; // a lock: not so a handle without a node
    bool m_isCounted = false; // by the counters of the node: not so when that has left the tree
    TaDataHandleBase* m_previous = nullptr; // in that list
    TaDataHandleBase* m_next = nullptr;
};
