#include "tabase/tadatamanager.h"

#include "groundwork/tuarray.h"
#include "groundwork/tuexceptions.h"
#include "groundwork/tustreamwriteasciistring.h"
#include "platform/platformthread.h"
#include "tabase/tadatahandlelockonly.h"
#include "tabase/talockattempt.h"
#include "tabase/tanodetreereader.h"
#include "tabase/tanodetreewriter.h"

#include <utility>

namespace {

TaNode* mutableNode(const TaNode* node) { return const_cast<TaNode*>(node); }

bool isOneBelowTheOther(const TaNode& a, const TuSmartPointer<const TaNode>& b)
{
    return &a == b.Get() || a.IsDescendantOf(b) || b->IsDescendantOf(&a);
}

CString pathOf(const TaNode& node)
{
    TuArray<CString> names;
    for (TuSmartPointer<const TaNode> next(&node); !next.IsNull(); next = next->GetParent()) {
        names.Add(next->GetName());
    }
    CString path = names.GetLast();
    for (unsigned int i = names.GetSize() - 1; i-- != 0;) {
        path += u"/";
        path += names[i];
    }
    return path;
}

} // namespace

TaDataManager::TaDataManager(EFairness fairness)
    : m_root(TuMake<TaNode>(u"Root", false, true))
    , m_fairness(fairness)
{
    m_root->setDataManager(this);
}

TaDataManager::~TaDataManager()
{
    const TuCriticalSectionAuto guard(m_lock);
    while (m_firstHandle != nullptr) {
        forgetHandle(*m_firstHandle);
    }
    m_root->setDataManager(nullptr);
}

// Handles.

void TaDataManager::requestLock(TaDataHandleBase& handle)
{
    const TuCriticalSectionAuto guard(m_lock);
    const TaNode* const node = handle.getNode();
    if (node == nullptr) {
        handle.m_accessGranted.store(true, std::memory_order_release);
    } else if (TaDataManager* const owner = node->m_dataManager.load();
               owner != nullptr && owner != this) {
        throw TuExceptionPreconditionViolation(
            TU_HERE, u"a handle is made with the manager whose tree holds the node");
    } else {
        const SReadWriteCount held = node->getThreadManager().Get(handle.m_threadId);
        const bool write = handle.GetAccessRights() == TaDataHandleBase::eAR_Write;
        if (write ? held.write != 0 : !held.IsZero()) {
            addLock(handle);
        } else {
            m_pendingRequests.Add(handle.m_threadId, handle);
        }
    }
    enlist(handle);
}

/// Among all handles that live.
void TaDataManager::enlist(TaDataHandleBase& handle) noexcept
{
    handle.m_manager = this;
    handle.m_isListed = true;
    handle.m_next = m_firstHandle;
    if (m_firstHandle != nullptr) {
        m_firstHandle->m_previous = &handle;
    }
    m_firstHandle = &handle;
}

void TaDataManager::delist(TaDataHandleBase& handle) noexcept
{
    handle.m_manager = nullptr;
    handle.m_isListed = false;
    (handle.m_previous != nullptr ? handle.m_previous->m_next : m_firstHandle) = handle.m_next;
    if (handle.m_next != nullptr) {
        handle.m_next->m_previous = handle.m_previous;
    }
    handle.m_previous = handle.m_next = nullptr;
}

/// A handle that is not yet at its end.
void TaDataManager::unlockHandle(TaDataHandleBase& handle) noexcept
{
    const TuCriticalSectionAuto guard(m_lock);
    unlock(handle);
}

/// The end of a handle, or of the manager.
void TaDataManager::forgetHandle(TaDataHandleBase& handle) noexcept
{
    const TuCriticalSectionAuto guard(m_lock);
    if (handle.m_isHolding) {
        unlock(handle);
    } else {
        unrequestLock(handle);
        handle.m_accessGranted.store(false, std::memory_order_release);
    }
    delist(handle);
}

void TaDataManager::unrequestLock(TaDataHandleBase& handle) noexcept
{
    if (m_pendingRequests.Remove(handle.m_threadId, handle)) {
        wakeWaiting(); // its thread, which it may have kept waiting, and whom it has held back
    }
}

void TaDataManager::unlock(TaDataHandleBase& handle) noexcept
{
    if (!handle.m_isHolding) {
        handle.m_accessGranted.store(false, std::memory_order_release); // a handle without a node
        return;
    }
    removeLock(handle);
    if (!m_grantedHandles.Has(handle.m_threadId) && m_pendingRequests.Has(handle.m_threadId)) {
        m_pendingRequests.RemoveAll(handle.m_threadId);
        wakeWaiting(); // its thread waits for nothing now
    } else if (handle.GetAccessRights() == TaDataHandleBase::eAR_Write) {
        wakeReaders(*handle.getNode());
    }
}

void TaDataManager::replaceHandle(TaDataHandleBase& handle, TaDataHandleBase& by) noexcept
{
    const TuCriticalSectionAuto guard(m_lock);
    m_pendingRequests.Replace(handle.m_threadId, handle, by);
    m_grantedHandles.Replace(handle.m_threadId, handle, by);
    by.m_accessGranted.store(handle.m_accessGranted.exchange(false));
    by.m_isHolding = std::exchange(handle.m_isHolding, false);
    by.m_isCounted = std::exchange(handle.m_isCounted, false);
    delist(handle);
    enlist(by);
}

/// All requests of the thread, or, where there is no memory, none.
void TaDataManager::grantAll(unsigned int threadId)
{
    unsigned int count = 0;
    try {
        m_pendingRequests.ForEachOf(
            threadId, [&](TaDataHandleBase& request) TU_NO_THREAD_SAFETY_ANALYSIS {
                addLock(request);
                ++count;
                return true;
            });
    } catch (...) {
        m_pendingRequests.ForEachOf(
            threadId, [&](TaDataHandleBase& request) TU_NO_THREAD_SAFETY_ANALYSIS {
                const bool isAdded = count != 0;
                if (isAdded) {
                    removeLock(request);
                    --count;
                }
                return isAdded;
            });
        throw;
    }
    m_pendingRequests.RemoveAll(threadId);
}

void TaDataManager::grant(TaDataHandleBase& handle)
{
    addLock(handle);
    m_pendingRequests.Remove(handle.m_threadId, handle);
}

/// Enters the lock into the books, or, where there is no memory, into none of them.
void TaDataManager::addLock(TaDataHandleBase& handle)
{
    const unsigned int threadId = handle.m_threadId;
    const bool write = handle.GetAccessRights() == TaDataHandleBase::eAR_Write;
    m_grantedHandles.Add(threadId, handle);
    try {
        TaNode* const node = mutableNode(handle.getNode());
        write ? node->incrementWriteCounter(threadId) : node->incrementReadCounter(threadId);
    } catch (...) {
        m_grantedHandles.Remove(threadId, handle);
        throw;
    }
    handle.m_accessGranted.store(true, std::memory_order_release);
    handle.m_isHolding = true;
    handle.m_isCounted = true;
    ++m_lockCount;
    m_writeLockCount += write ? 1 : 0;
}

void TaDataManager::removeLock(TaDataHandleBase& handle) noexcept
{
    const unsigned int threadId = handle.m_threadId;
    const bool write = handle.GetAccessRights() == TaDataHandleBase::eAR_Write;
    if (std::exchange(handle.m_isCounted, false)) {
        TaNode* const node = mutableNode(handle.getNode());
        write ? node->decrementWriteCounter(threadId) : node->decrementReadCounter(threadId);
    }
    handle.m_accessGranted.store(false, std::memory_order_release);
    handle.m_isHolding = false;
    m_grantedHandles.Remove(threadId, handle);
    --m_lockCount;
    m_writeLockCount -= write ? 1 : 0;
}

void TaDataManager::unlockHandlesCurrentThread(TaDataHandleBase& handle, bool withHandle) noexcept
{
    const unsigned int threadId = platform::GetCurrentThreadId();
    if (withHandle) {
        unlock(handle); // it may be another thread's
    }
    while (TaDataHandleBase* const granted = m_grantedHandles.GetFirst(threadId)) {
        unlock(*granted);
    }
}

// Attempts.

TuCheckReturn<bool> TaDataManager::TryLockAndWait(unsigned int timeout, ELockStatus& status)
{
    try {
        status = TaLockAttempt(*this, timeout).Run();
    } catch (...) {
        status = eLS_Exception;
    }
    return status == eLS_Granted;
}

TuCheckReturn<bool> TaDataManager::TryLockAndWait(unsigned int timeout)
{
    ELockStatus status = eLS_Exception;
    return TryLockAndWait(timeout, status);
}

TuCheckReturn<bool> TaDataManager::TryLock() { return TryLockAndWait(0); }

// The locks on nodes above show in the counters of the node itself. Lists and counters change only
// under the manager's lock, so the walk takes no other.
const TaNode* TaDataManager::checkReadWriteLocks(
    const TaNode* node, bool write) const TU_NO_THREAD_SAFETY_ANALYSIS
{
    const TaNode* next = node;
    while (next != nullptr && next->m_writeCount == 0 && (!write || next->m_readCount == 0)) {
        next = next->getNext(*node);
    }
    return next;
}

bool TaDataManager::isHeldBack(
    unsigned int threadId, const TaNode& node, const TaLockAttempt& attempt) const
{
    if (m_fairness == eF_None || m_grantedHandles.Has(threadId)) {
        return false;
    }
    for (const TaLockAttempt* const other : m_waiting) {
        if (other == &attempt) {
            return false; // those that follow have waited less long
        }
        const bool passes = m_pendingRequests.ForEachOf(
            other->GetThreadId(), [this, &node](TaDataHandleBase& request) {
                const TaNode* const wanted = request.getNode();
                return request.GetAccessRights() != TaDataHandleBase::eAR_Write || !isInTree(wanted)
                    || !areOnOnePath(*wanted, node);
            });
        if (!passes) {
            return true;
        }
    }
    return false;
}

/// The two nodes are in the tree.
bool TaDataManager::areOnOnePath(const TaNode& a, const TaNode& b)
{
    return &a == &b || a.isDescendantOf(&b) || b.isDescendantOf(&a);
}

/// Where a write lock goes and read locks stay, no event says so, and yet readers may be let in.
void TaDataManager::wakeReaders(const TaNode& node) noexcept
{
    for (TaLockAttempt* const attempt : m_waiting) {
        const bool isElsewhere = m_pendingRequests.ForEachOf(
            attempt->GetThreadId(), [this, &node](TaDataHandleBase& request) {
                const TaNode* const wanted = request.getNode();
                return isInTree(wanted) && isInTree(&node) && !areOnOnePath(*wanted, node);
            });
        if (!isElsewhere) {
            attempt->Wake();
        }
    }
}

void TaDataManager::wakeWaiting() noexcept
{
    for (TaLockAttempt* const attempt : m_waiting) {
        attempt->Wake();
    }
}

bool TaDataManager::isAnotherThreadLocking(bool write) const
{
    const unsigned int self = platform::GetCurrentThreadId();
    if (m_grantedHandles.GetCount(self) == m_lockCount) {
        return false;
    }
    return !m_grantedHandles.ForEach(
        [self, write](unsigned int threadId, TaDataHandleBase& handle) {
            return threadId == self
                || (write && handle.GetAccessRights() != TaDataHandleBase::eAR_Write);
        });
}

bool TaDataManager::IsCurrentThreadLocking() const
{
    const TuCriticalSectionAuto guard(m_lock);
    return m_grantedHandles.Has(platform::GetCurrentThreadId());
}

// The tree.

TuSmartPointer<const TaNode> TaDataManager::FindChild(const String& name) const
{
    return GetRootNode()->FindChild(name);
}

bool TaDataManager::checkAccessRightsInsert(const TaNode* parent) const
{
    const unsigned int self = platform::GetCurrentThreadId();
    return parent != nullptr && parent->m_dataManager.load() == this
        && (parent->getThreadManager().Get(self).write != 0 || !isAnotherThreadLocking(false));
}

TuCheckReturn<bool> TaDataManager::InsertNode(
    const TuSmartPointer<TaNode>& node, const TuSmartPointer<TaNode>& parent)
{
    const TuCriticalSectionAuto guard(m_lock);
    if (node.IsNull() || !checkAccessRightsInsert(parent.Get()) || !node->GetParent().IsNull()) {
        return false;
    }
    // Another manager may be about to do the same.
    TaDataManager* none = nullptr;
    if (!node->m_dataManager.compare_exchange_strong(none, this)) {
        return false;
    }
    try {
        link(*node, *parent);
    } catch (...) {
        node->m_dataManager.store(nullptr);
        throw;
    }
    node->setDataManager(this);
    parent->setModified(true, false);
    return true;
}

TuCheckReturn<bool> TaDataManager::MoveNode(
    TaDataHandleBase& handle, const TuSmartPointer<TaNode>& newParent)
{
    const TuCriticalSectionAuto guard(m_lock);
    if (!handle.m_isCounted || !checkAccessRightsRemove(handle)
        || !checkAccessRightsInsert(newParent.Get()) || newParent.Get() == handle.getNode()
        || newParent->isDescendantOf(handle.getNode())) {
        return false;
    }
    const TuSmartPointer<TaNode> node(mutableNode(handle.getNode()));
    const TuSmartPointer<TaNode> parent = node->GetParent();
    if (parent != newParent) {
        link(*node, *newParent);
        wakeWaiting();
        parent->setModified(true, false);
        newParent->setModified(true, false);
    }
    return true;
}

/// Puts the node behind the children of `parent`, and takes it off its former one.
void TaDataManager::link(TaNode& node, TaNode& parent)
{
    parent.prepareChild();
    node.adaptCounters(parent);
    node.moveTo(parent);
}

bool TaDataManager::checkAccessRightsRemove(TaDataHandleBase& handle) const
{
    const TaNode* const node = handle.getNode();
    return handle.m_manager == this && handle.GetAccessRights() == TaDataHandleBase::eAR_Write
        && node != nullptr && node->m_dataManager.load() == this
        && node->getParentNode() != nullptr;
}

TuCheckReturn<bool> TaDataManager::RemoveNode(TaDataHandleBase& handle)
{
    const TuCriticalSectionAuto guard(m_lock);
    if (!checkAccessRightsRemove(handle)) {
        return false;
    }
    TaNode& node = *mutableNode(handle.getNode()); // the handle keeps it
    unlockHandlesCurrentThread(handle, true);
    node.getParentNode()->setModified(true, false);
    node.unlink(false, true);
    forget(node);
    return true;
}

TuCheckReturn<bool> TaDataManager::Reset(unsigned int timeout)
{
    const TuSmartPointer<TaNode> former = TuMake<TaNode>(); // goes when the lock has been left
    TaDataHandleLockOnly<1> exclusive;
    {
        const TuCriticalSectionAuto guard(m_lock);
        unlockHandlesCurrentThread(exclusive, false);
    }
    exclusive = TaDataHandleLockOnly<1>(*this, m_root);
    if (TaLockAttempt(*this, timeout, &exclusive).Run() != eLS_Granted) {
        return false;
    }
    const TuCriticalSectionAuto guard(m_lock);
    m_root->setModified(true, false);
    TaNode nothing;
    exchangeTree(*former, nothing);
    return true;
}

void TaDataManager::exchangeTree(TaNode& former, TaNode& next)
{
    next.adaptCounters(*m_root); // what comes is covered by the locks on the root
    former.takeChildren(*m_root);
    try {
        m_root->takeChildren(next);
    } catch (...) {
        m_root->takeChildren(former);
        throw;
    }
    forget(former);
    m_root->setDataManager(this);
}

/// Takes all locks off a subtree that has left the tree. Handles on it count for their threads
/// until they are given back, but no longer on nodes: these may come into a tree again.
void TaDataManager::forget(TaNode& node) noexcept
{
    node.resetReadWriteCounters();
    node.setDataManager(nullptr);
    m_grantedHandles.ForEach([](unsigned int threadId, TaDataHandleBase& handle) {
        if (handle.getNode()->getThreadManager().Get(threadId).IsZero()) {
            handle.m_isCounted = false;
        }
        return true;
    });
    wakeWaiting(); // who waits for what has left the tree, or was held back for it
}

/// A read lock on the whole tree for the calling thread, whatever it holds itself. It leaves the
/// thread's requests alone, which the last handle that is given back would not.
class TaDataManager::Reading
{
public:
    explicit Reading(TaDataManager& manager)
        : m_manager(manager)
        , m_handle(manager, manager.m_root)
    {
        const TuCriticalSectionAuto guard(m_manager.m_lock);
        if (m_manager.isAnotherThreadLocking(true)) {
            throw TuExceptionPreconditionViolation(
                TU_HERE, u"no other thread holds a write lock while the tree is stored");
        }
        if (!m_handle.IsAccessGranted()) {
            m_manager.grant(m_handle);
        }
    }
    ~Reading()
    {
        const TuCriticalSectionAuto guard(m_manager.m_lock);
        if (m_handle.m_isHolding) { // a value may have reset the tree
            m_manager.removeLock(m_handle);
        }
    }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

private:
    TaDataManager& m_manager;
    TaDataHandleLockOnly<0> m_handle;
};

void TaDataManager::Serialize(TuStreamWriteBinary& stream) const
{
    const Reading reading(const_cast<TaDataManager&>(*this));
    TaNodeTreeWriter(stream).Write(*m_root);
}

void TaDataManager::Serialize(TuStreamReadBinary& stream)
{
    const TuSmartPointer<TaNode> former = TuMake<TaNode>(); // goes when the lock has been left
    const TuSmartPointer<TaNode> next = TuMake<TaNode>();
    TaNodeTreeReader(stream).Read(next);
    const TuCriticalSectionAuto guard(m_lock);
    if (!checkAccessRightsInsert(m_root.Get())) {
        throw TuExceptionPreconditionViolation(TU_HERE,
            u"to replace the tree, a thread holds a write lock on the root, or no other thread"
            u" holds any lock");
    }
    exchangeTree(*former, *next);
    m_root->setModified(false, false);
}

// The account.

// The stream may be anybody's, so nothing is written there under the lock.
void TaDataManager::dump(TuStreamWriteASCII& stream) const
{
    TuStreamWriteASCIIStringT<CString> text;
    {
        const TuCriticalSectionAuto guard(m_lock);
        m_root->dumpTree(text, platform::GetCurrentThreadId());
        dumpLocks(text, *m_root);
        m_pendingRequests.ForEach(
            [&](unsigned int, TaDataHandleBase& request) TU_NO_THREAD_SAFETY_ANALYSIS {
                dumpRequest(text, request);
                return true;
            });
    }
    stream << text;
}

/// The locks on the node, above it and below it, each with the thread that holds it.
void TaDataManager::dumpLocks(TuStreamWriteASCII& stream, const TaNode& node) const
{
    m_grantedHandles.ForEach(
        [&](unsigned int, TaDataHandleBase& handle) TU_NO_THREAD_SAFETY_ANALYSIS {
            if (isOneBelowTheOther(node, handle.getNode())) {
                dumpLock(stream, handle);
                stream << u"\n";
            }
            return true;
        });
}

void TaDataManager::dumpLock(TuStreamWriteASCII& stream, TaDataHandleBase& handle) const
{
    const bool write = handle.GetAccessRights() == TaDataHandleBase::eAR_Write;
    stream << u"thread " << handle.m_threadId << (write ? u" writes " : u" reads ")
           << pathOf(*handle.getNode());
}

void TaDataManager::dumpRequest(TuStreamWriteASCII& stream, TaDataHandleBase& handle) const
{
    const bool write = handle.GetAccessRights() == TaDataHandleBase::eAR_Write;
    stream << u"thread " << handle.m_threadId << (write ? u" asks to write " : u" asks to read ")
           << pathOf(*handle.getNode());
    if (!isInTree(handle.getNode())) {
        stream << u", which is in no tree\n";
        return;
    }
    const TaNode* const obstacle = checkReadWriteLocks(handle.getNode(), write);
    if (obstacle == nullptr) {
        stream << u"\n";
        return;
    }
    stream << u"; in the way:\n";
    m_grantedHandles.ForEach(
        [&](unsigned int threadId, TaDataHandleBase& other) TU_NO_THREAD_SAFETY_ANALYSIS {
            const bool covers
                = other.getNode() == obstacle || obstacle->isDescendantOf(other.getNode());
            if (covers && (write || other.GetAccessRights() == TaDataHandleBase::eAR_Write)) {
                stream << u"    ";
                dumpLock(stream, other);
                stream << (threadId == handle.m_threadId ? u" itself\n" : u"\n");
            }
            return true;
        });
}
