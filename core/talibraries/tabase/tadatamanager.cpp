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
    while (TaDataHandleBase* const handle = m_firstHandle) {
        unrequestLock(*handle);
        unlock(*handle);
        unregisterHandle(*handle);
        handle->m_manager = nullptr;
    }
    m_root->setDataManager(nullptr);
}

// Handles.

void TaDataManager::registerHandle(TaDataHandleBase& handle)
{
    const TuCriticalSectionAuto guard(m_lock);
    handle.m_next = m_firstHandle;
    if (m_firstHandle != nullptr) {
        m_firstHandle->m_previous = &handle;
    }
    m_firstHandle = &handle;
}

void TaDataManager::unregisterHandle(TaDataHandleBase& handle) noexcept
{
    const TuCriticalSectionAuto guard(m_lock);
    (handle.m_previous != nullptr ? handle.m_previous->m_next : m_firstHandle) = handle.m_next;
    if (handle.m_next != nullptr) {
        handle.m_next->m_previous = handle.m_previous;
    }
    handle.m_previous = handle.m_next = nullptr;
}

void TaDataManager::requestLock(TaDataHandleBase& handle)
{
    const TuCriticalSectionAuto guard(m_lock);
    const TaNode* const node = handle.getNode();
    if (node == nullptr) {
        handle.m_accessGranted.store(true);
        return;
    }
    if (node->IsManaged() && node->m_dataManager.load() != this) {
        throw TuExceptionPreconditionViolation(
            TU_HERE, u"a handle is made with the manager whose tree holds the node");
    }
    const SReadWriteCount held = node->getThreadManager().Get(handle.m_threadId);
    const bool isCovered = handle.GetAccessRights() == TaDataHandleBase::eAR_Write ? held.write != 0
                                                                                   : !held.IsZero();
    if (isCovered) {
        grant(handle.m_threadId, Handles{ &handle });
    } else {
        openHandles(m_pendingRequests, handle.m_threadId).Add(&handle);
    }
}

void TaDataManager::unrequestLock(TaDataHandleBase& handle) noexcept
{
    const TuCriticalSectionAuto guard(m_lock);
    Handles* const pending = m_pendingRequests.Lookup(handle.m_threadId);
    if (pending != nullptr && pending->RemoveKey(&handle) && pending->IsEmpty()) {
        closeHandles(m_pendingRequests, handle.m_threadId);
    }
}

void TaDataManager::unlock(TaDataHandleBase& handle) noexcept
{
    const TuCriticalSectionAuto guard(m_lock);
    handle.m_accessGranted.store(false);
    Handles* const granted = m_grantedHandles.Lookup(handle.m_threadId);
    if (granted == nullptr || !granted->RemoveKey(&handle)) {
        return; // not granted, or without a node
    }
    const bool write = handle.GetAccessRights() == TaDataHandleBase::eAR_Write;
    removeLock(handle, write);
    countDown(handle.m_threadId);
    if (write && isLocking(handle.m_threadId)) {
        wakeWaiting(); // who reads may be let in where the thread only reads now
    }
}

void TaDataManager::replaceHandle(TaDataHandleBase& handle, TaDataHandleBase& by) noexcept
{
    const TuCriticalSectionAuto guard(m_lock);
    // The place that the one leaves serves the other: this needs no memory.
    for (HandlesOfThreads* all : { &m_pendingRequests, &m_grantedHandles }) {
        Handles* const handles = all->Lookup(handle.m_threadId);
        if (handles != nullptr && handles->RemoveKey(&handle)) {
            handles->Add(&by);
        }
    }
    by.m_accessGranted.store(handle.m_accessGranted.exchange(false));
    by.m_isCounted = std::exchange(handle.m_isCounted, false);
    unregisterHandle(handle);
    registerHandle(by);
    by.m_manager = std::exchange(handle.m_manager, nullptr);
}

// The set of a thread is made and goes with each lock that it takes alone; the memory of the last
// one is kept for the next.

TaDataManager::Handles& TaDataManager::openHandles(HandlesOfThreads& all, unsigned int threadId)
{
    if (Handles* const handles = all.Lookup(threadId)) {
        return *handles;
    }
    Handles& handles = all[threadId];
    handles.Swap(m_spareHandles);
    return handles;
}

void TaDataManager::closeHandles(HandlesOfThreads& all, unsigned int threadId) noexcept
{
    if (Handles* const handles = all.Lookup(threadId)) {
        handles->RemoveAll();
        handles->Swap(m_spareHandles);
        all.RemoveKey(threadId);
    }
}

/// All of the handles, or, where there is no memory, none. They may stand among the requests.
void TaDataManager::grant(unsigned int threadId, const Handles& handles)
{
    try {
        unsigned int& lockCount = m_threadLockCount[threadId];
        Handles& granted = openHandles(m_grantedHandles, threadId);
        for (TaDataHandleBase* const handle : handles) {
            granted.Add(handle);
            addLock(*handle);
            ++lockCount;
        }
    } catch (...) {
        for (TaDataHandleBase* const handle : handles) {
            Handles* const granted = m_grantedHandles.Lookup(threadId);
            if (granted != nullptr && granted->RemoveKey(handle) && handle->m_isCounted) {
                removeLock(*handle, handle->GetAccessRights() == TaDataHandleBase::eAR_Write);
                --m_threadLockCount[threadId];
            }
        }
        if (!isLocking(threadId)) {
            closeHandles(m_grantedHandles, threadId);
            m_threadLockCount.RemoveKey(threadId);
        }
        throw;
    }
    Handles* const pending = m_pendingRequests.Lookup(threadId);
    for (TaDataHandleBase* const handle : handles) {
        handle->m_accessGranted.store(true);
        if (pending != nullptr && pending != &handles) {
            pending->RemoveKey(handle);
        }
    }
    if (pending != nullptr && (pending == &handles || pending->IsEmpty())) {
        closeHandles(m_pendingRequests, threadId);
    }
}

void TaDataManager::addLock(TaDataHandleBase& handle)
{
    TaNode* const node = mutableNode(handle.getNode());
    const bool write = handle.GetAccessRights() == TaDataHandleBase::eAR_Write;
    if (write) {
        node->incrementWriteCounter(handle.m_threadId);
        ++m_writeLockCount;
    } else {
        node->incrementReadCounter(handle.m_threadId);
    }
    ++m_lockCount;
    handle.m_isCounted = true;
}

void TaDataManager::removeLock(TaDataHandleBase& handle, bool write) noexcept
{
    if (std::exchange(handle.m_isCounted, false)) {
        TaNode* const node = mutableNode(handle.getNode());
        if (write) {
            node->decrementWriteCounter(handle.m_threadId);
        } else {
            node->decrementReadCounter(handle.m_threadId);
        }
    }
    --m_lockCount;
    m_writeLockCount -= write ? 1 : 0;
}

void TaDataManager::countDown(unsigned int threadId) noexcept
{
    unsigned int* const lockCount = m_threadLockCount.Lookup(threadId);
    if (lockCount != nullptr && --*lockCount == 0) {
        closeHandles(m_pendingRequests, threadId);
        closeHandles(m_grantedHandles, threadId);
        m_threadLockCount.RemoveKey(threadId);
    }
}

void TaDataManager::unlockHandlesCurrentThread(TaDataHandleBase& handle, bool withHandle) noexcept
{
    const unsigned int threadId = platform::GetCurrentThreadId();
    if (withHandle) {
        unlock(handle); // it may be another thread's
    }
    for (;;) {
        const Handles* const granted = m_grantedHandles.Lookup(threadId);
        if (granted == nullptr || granted->IsEmpty()) {
            return;
        }
        unlock(**granted->begin());
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
    if (node == nullptr || (write ? m_lockCount : m_writeLockCount) == 0) {
        return nullptr;
    }
    const TaNode* next = node;
    while (next != nullptr && next->m_writeCount == 0 && (!write || next->m_readCount == 0)) {
        next = next->getNext(*node);
    }
    return next;
}

bool TaDataManager::isHeldBack(
    unsigned int threadId, const TaNode& node, const TaLockAttempt& attempt) const
{
    if (m_fairness == eF_None || isLocking(threadId)) {
        return false;
    }
    for (const TaLockAttempt* const other : m_waiting) {
        if (other == &attempt) {
            return false; // those that follow have waited less long
        }
        const Handles* const requests = m_pendingRequests.Lookup(other->GetThreadId());
        if (requests == nullptr) {
            continue;
        }
        for (TaDataHandleBase* const request : *requests) {
            const TaNode* const wanted = request->getNode();
            if (request->GetAccessRights() == TaDataHandleBase::eAR_Write
                && (wanted == &node || wanted->isDescendantOf(&node)
                    || node.isDescendantOf(wanted))) {
                return true;
            }
        }
    }
    return false;
}

void TaDataManager::wakeWaiting() noexcept
{
    for (TaLockAttempt* const attempt : m_waiting) {
        attempt->Wake();
    }
}

bool TaDataManager::isLocking(unsigned int threadId) const
{
    const unsigned int* const lockCount = m_threadLockCount.Lookup(threadId);
    return lockCount != nullptr && *lockCount != 0;
}

bool TaDataManager::isAnotherThreadLocking(bool write) const
{
    const unsigned int self = platform::GetCurrentThreadId();
    for (const auto& [threadId, handles] : m_grantedHandles) {
        for (TaDataHandleBase* const handle : handles) {
            if (threadId != self
                && (!write || handle->GetAccessRights() == TaDataHandleBase::eAR_Write)) {
                return true;
            }
        }
    }
    return false;
}

bool TaDataManager::IsCurrentThreadLocking() const
{
    const TuCriticalSectionAuto guard(m_lock);
    return isLocking(platform::GetCurrentThreadId());
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
    TuSmartPointer<TaNode> node, TuSmartPointer<TaNode> parent)
{
    const TuCriticalSectionAuto guard(m_lock);
    if (node.IsNull() || !checkAccessRightsInsert(parent.Get())
        || node->getParentNode() != nullptr) {
        return false;
    }
    // Another manager may be about to do the same.
    TaDataManager* none = nullptr;
    if (!node->m_dataManager.compare_exchange_strong(none, this)) {
        return false;
    }
    try {
        parent->setModified(true, false);
        link(node, parent);
    } catch (...) {
        node->m_dataManager.store(nullptr);
        throw;
    }
    node->setDataManager(this);
    return true;
}

TuCheckReturn<bool> TaDataManager::MoveNode(
    TaDataHandleBase& handle, TuSmartPointer<TaNode> newParent)
{
    const TuCriticalSectionAuto guard(m_lock);
    if (!handle.IsAccessGranted() || !checkAccessRightsRemove(handle)
        || !checkAccessRightsInsert(newParent.Get()) || newParent.Get() == handle.getNode()
        || newParent->isDescendantOf(handle.getNode())) {
        return false;
    }
    const TuSmartPointer<TaNode> node(mutableNode(handle.getNode()));
    const TuSmartPointer<TaNode> parent = node->GetParent();
    if (parent != newParent) {
        parent->setModified(true, false);
        newParent->setModified(true, false);
        link(node, newParent);
        wakeWaiting();
    }
    return true;
}

/// Puts the node behind the children of `parent`, and takes it off its former one.
void TaDataManager::link(TuSmartPointer<TaNode> node, TuSmartPointer<TaNode> parent)
{
    // The first weak link to a node needs memory. After this one, setParent cannot fail.
    const TuWeakPointer<TaNode> firstLink(parent.Get());
    const TuSmartPointer<TaNode> formerParent = node->GetParent();
    const auto formerPlace = node->m_place;
    parent->addChild(node);
    try {
        node->adaptCounters(*parent);
    } catch (...) {
        parent->removeChild(node->m_place);
        node->m_place = formerPlace;
        throw;
    }
    node->setParent(parent);
    if (!formerParent.IsNull()) {
        formerParent->removeChild(formerPlace);
    }
}

bool TaDataManager::checkAccessRightsRemove(TaDataHandleBase& handle) const
{
    const TaNode* const node = handle.getNode();
    return handle.GetAccessRights() == TaDataHandleBase::eAR_Write && node != nullptr
        && node->m_dataManager.load() == this && node->getParentNode() != nullptr;
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
    for (const auto& [threadId, handles] : m_grantedHandles) {
        for (TaDataHandleBase* const handle : handles) {
            if (handle->getNode()->getThreadManager().Get(threadId).IsZero()) {
                handle->m_isCounted = false;
            }
        }
    }
}

void TaDataManager::Serialize(TuStreamWriteBinary& stream) const
{
    auto& self = const_cast<TaDataManager&>(*this);
    TaDataHandleLockOnly<0> reading(self, m_root);
    {
        const TuCriticalSectionAuto guard(m_lock);
        if (isAnotherThreadLocking(true)) {
            throw TuExceptionPreconditionViolation(
                TU_HERE, u"no other thread holds a write lock while the tree is stored");
        }
        if (!reading.IsAccessGranted()) {
            self.grant(platform::GetCurrentThreadId(), Handles{ &reading });
        }
    }
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
        m_root->dump(text);
        dumpLocks(text, *m_root);
        for (const auto& [threadId, requests] : m_pendingRequests) {
            for (TaDataHandleBase* const request : requests) {
                dumpRequest(text, *request);
            }
        }
    }
    stream << text;
}

/// The locks on the node, above it and below it, each with the thread that holds it.
void TaDataManager::dumpLocks(TuStreamWriteASCII& stream, const TaNode& node) const
{
    for (const auto& [threadId, handles] : m_grantedHandles) {
        for (TaDataHandleBase* const handle : handles) {
            if (isOneBelowTheOther(node, handle->getNode())) {
                dumpLock(stream, *handle);
                stream << u"\n";
            }
        }
    }
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
    const TaNode* const obstacle = checkReadWriteLocks(handle.getNode(), write);
    if (obstacle == nullptr) {
        stream << u"\n";
        return;
    }
    stream << u"; in the way:\n";
    for (const auto& [threadId, handles] : m_grantedHandles) {
        for (TaDataHandleBase* const other : handles) {
            const bool covers
                = other->getNode() == obstacle || obstacle->isDescendantOf(other->getNode());
            if (covers && (write || other->GetAccessRights() == TaDataHandleBase::eAR_Write)) {
                stream << u"    ";
                dumpLock(stream, *other);
                stream << (threadId == handle.m_threadId ? u" itself\n" : u"\n");
            }
        }
    }
}
