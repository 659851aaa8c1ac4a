#pragma once

#include "groundwork/cstring.h"
#include "groundwork/tucheckreturn.h"
#include "groundwork/tucriticalsection.h"
#include "groundwork/tuidumpable.h"
#include "groundwork/tuinoncopyable.h"
#include "groundwork/tulist.h"
#include "groundwork/tusmartpointer.h"
#include "tabase/tadatahandlebase.h"
#include "tabase/tahandlesofthreads.h"
#include "tabase/tanode.h"

class TaLockAttempt;
class TuStreamReadBinary;
class TuStreamWriteBinary;

/// Owns the data tree, and decides who may read and who may change which part of it.
///
/// Code that needs nodes makes a handle for each of them, and then asks for all at once:
///
///     TaDataHandleLockOnly<0> source(manager, mesh);
///     TaDataHandleLockOnly<1> target(manager, results);
///     if (manager.TryLockAndWait(kPatienceMs))
///         Compute(*source.GetNode(), *target.GetNode());
///
/// Locks count per thread: on a node on which a thread holds a lock that covers the new one, it is
/// granted again at once. In all else its own locks are in its way like those of others: who reads
/// a node and asks to write it, or anything below it, waits in vain. A thread that holds no lock
/// while it waits can deadlock with nobody; one that holds locks, and waits for ever, can.
///
/// Ownership: of the tree; its nodes live on where handles or smart pointers hold them. Handles may
///            outlive the manager.
/// Threads:   all operations may run on any thread at once, but for destruction.
/// Failure:   attempts to lock never throw, they tell a status. TuExceptionOutOfMemory or
///            std::bad_alloc from what changes the tree; nothing has changed then.
class TABASE_API TaDataManager : public TuIDumpable<1>, public TuINonCopyable
{
public:
    enum ELockStatus
    {
        eLS_Granted = 0, // all requests of the thread
        eLS_Exception = 1, // raised inside the attempt, and swallowed; the requests are still there
        eLS_NoRequests = 2,
        eLS_WaitFailed = 3, // the system refused; as behind all that follow, the requests are gone
        eLS_InvalidHandle = 4, // one of the requests is for a node that is not in the tree
        eLS_Conflict = 5, // another lock is in the way, and the time-out is 0
        eLS_TimedOut = 6,
    };

    enum EFairness
    {
        /// Whoever can be granted is: readers that come and go can keep a writer out for ever.
        eF_None,
        /// A request to write that waits lets no new reader pass: a thread that holds no lock, and
        /// asks to read what that request covers, or what covers it, waits behind it.
        eF_WritersFirst,
    };

    /// The tree is a node "Root".
    explicit TaDataManager(EFairness fairness = eF_None);
    ~TaDataManager() override;

    /// Grants all requests of the calling thread, or none; waits up to `timeout` milliseconds
    /// (TuEvent::kInfinite: for ever) until other locks are given back.
    TuCheckReturn<bool> TryLockAndWait(unsigned int timeout, ELockStatus& status);
    TuCheckReturn<bool> TryLockAndWait(unsigned int timeout);
    /// Without waiting.
    TuCheckReturn<bool> TryLock();

    // The tree is changed only where that is seen by nobody: the calling thread holds a write lock
    // on the node that gets a child, or no other thread holds any lock. A node that comes into the
    // tree is covered by the locks on the nodes above; the parents are marked as modified. (What
    // the hook of a parent throws passes on: an insertion or a move is complete then, a removal has
    // only given back the thread's locks.)

    /// Adds `node`, with all below it, behind the children of `parent`, which is in this tree.
    /// False, and nothing changes, for a node that is in a tree already.
    TuCheckReturn<bool> InsertNode(
        const TuSmartPointer<TaNode>& node, const TuSmartPointer<TaNode>& parent);
    /// Moves the node of a granted write handle behind the children of `newParent`; false where
    /// that is the node itself or lies below it. Its own locks stay. Where it is there already,
    /// nothing changes.
    TuCheckReturn<bool> MoveNode(TaDataHandleBase& handle, const TuSmartPointer<TaNode>& newParent);
    /// Gives back all locks of the calling thread, and that of the handle, and takes the node of
    /// the handle, a write handle, out of the tree with all below it. No lock of another thread
    /// remains on it. False for a read handle, for the root, and for a node of no tree or another.
    /// Whether the handle has been granted is not asked: that is the caller's affair.
    TuCheckReturn<bool> RemoveNode(TaDataHandleBase& handle);
    /// Gives back all locks of the calling thread, waits up to `timeout` milliseconds until nobody
    /// holds a lock, and empties the tree.
    TuCheckReturn<bool> Reset(unsigned int timeout);

    TuSmartPointer<TaNode> GetRootNode() { return m_root; }
    TuSmartPointer<const TaNode> GetRootNode() const { return m_root; }
    /// A child of the root; null where there is none of that name.
    TuSmartPointer<TaNode> FindChild(const String& name) { return m_root->FindChild(name); }
    TuSmartPointer<const TaNode> FindChild(const String& name) const;

    bool IsCurrentThreadLocking() const;

    /// Writes what hangs below the root: data nodes, and the plain nodes that lead to them. Of a
    /// node that is not to serialize its leaves, children without children are left out; the root
    /// is such a node. docs/format.md states the bytes.
    /// Throws TuException where another thread holds a write lock, and for a class of nodes or
    /// values that could not be made again by its name, before anything is written.
    void Serialize(TuStreamWriteBinary& stream) const;
    /// Replaces what hangs below the root.
    /// Throws TuException where the rule for changes forbids it, and for a class of nodes or values
    /// that is not known here, which it names; TuExceptionStream for a damaged record;
    /// TuExceptionWrongFileVersion for one of a later version. The tree is then as it was.
    void Serialize(TuStreamReadBinary& stream);

private:
    friend class TaDataHandleBase;
    friend class TaLockAttempt;
    friend class TaDataTreeProbe; // the tests look at the books with it
    class Reading;

    // What the handles call.
    void requestLock(TaDataHandleBase& handle);
    void replaceHandle(TaDataHandleBase& handle, TaDataHandleBase& by) noexcept;
    void unlockHandle(TaDataHandleBase& handle) noexcept;
    void forgetHandle(TaDataHandleBase& handle) noexcept;

    // All below hold the lock already.
    void unrequestLock(TaDataHandleBase& handle) noexcept TU_REQUIRES(m_lock);
    void unlock(TaDataHandleBase& handle) noexcept TU_REQUIRES(m_lock);
    void enlist(TaDataHandleBase& handle) noexcept TU_REQUIRES(m_lock);
    void delist(TaDataHandleBase& handle) noexcept TU_REQUIRES(m_lock);
    void grantAll(unsigned int threadId) TU_REQUIRES(m_lock);
    void grant(TaDataHandleBase& handle) TU_REQUIRES(m_lock);
    void addLock(TaDataHandleBase& handle) TU_REQUIRES(m_lock);
    void removeLock(TaDataHandleBase& handle) noexcept TU_REQUIRES(m_lock);
    void unlockHandlesCurrentThread(TaDataHandleBase& handle, bool withHandle) noexcept
        TU_REQUIRES(m_lock);
    const TaNode* checkReadWriteLocks(const TaNode* node, bool write) const TU_REQUIRES(m_lock);
    bool isHeldBack(unsigned int threadId, const TaNode& node, const TaLockAttempt& attempt) const
        TU_REQUIRES(m_lock);
    bool isAnotherThreadLocking(bool write) const TU_REQUIRES(m_lock);
    bool checkAccessRightsRemove(TaDataHandleBase& handle) const TU_REQUIRES(m_lock);
    bool checkAccessRightsInsert(const TaNode* parent) const TU_REQUIRES(m_lock);
    void link(TaNode& node, TaNode& parent) TU_REQUIRES(m_lock);
    /// Hands the children of the root to `former`, and gives it those of `next`.
    void exchangeTree(TaNode& former, TaNode& next) TU_REQUIRES(m_lock);
    void forget(TaNode& node) noexcept TU_REQUIRES(m_lock);
    bool isInTree(const TaNode* node) const
    {
        return node != nullptr && node->m_dataManager.load() == this;
    }
    static bool areOnOnePath(const TaNode& a, const TaNode& b);
    void wakeReaders(const TaNode& node) noexcept TU_REQUIRES(m_lock);
    void wakeWaiting() noexcept TU_REQUIRES(m_lock);

    void dump(TuStreamWriteASCII& stream) const override;
    void dumpLocks(TuStreamWriteASCII& stream, const TaNode& node) const TU_REQUIRES(m_lock);
    void dumpLock(TuStreamWriteASCII& stream, TaDataHandleBase& handle) const TU_REQUIRES(m_lock);
    void dumpRequest(TuStreamWriteASCII& stream, TaDataHandleBase& handle) const
        TU_REQUIRES(m_lock);

    TaHandlesOfThreads m_pendingRequests TU_GUARDED_BY(m_lock);
    TaHandlesOfThreads m_grantedHandles TU_GUARDED_BY(m_lock); // a thread's lock count, too
    mutable TuCriticalSection m_lock;
    TuSmartPointer<TaNode> m_root;

    const EFairness m_fairness;
    TuList<TaLockAttempt*> m_waiting TU_GUARDED_BY(m_lock); // in the order in which they came
    TaDataHandleBase* m_firstHandle TU_GUARDED_BY(m_lock) = nullptr; // of all that live
    /// How many locks are granted, in all and to write.
    unsigned int m_lockCount TU_GUARDED_BY(m_lock) = 0;
    unsigned int m_writeLockCount TU_GUARDED_BY(m_lock) = 0;
};
