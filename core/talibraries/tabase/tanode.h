#pragma once

#include "groundwork/cstring.h"
#include "groundwork/iobject.h"
#include "groundwork/tucriticalsection.h"
#include "groundwork/tuevent.h"
#include "groundwork/tuiclassname.h"
#include "groundwork/tuidumpable.h"
#include "groundwork/tuinoncopyable.h"
#include "groundwork/tulist.h"
#include "groundwork/tureferencecounted.h"
#include "groundwork/tusmartpointer.h"
#include "groundwork/tuweakpointer.h"
#include "tabase/tanodechildren.h"
#include "tabase/tathreadcounts.h"

#include <atomic>
#include <cstdint>
#include <optional>

#include "platform/platformmacrospush.h"

class ISerializable;
class TaDataManager;
class TaLockAttempt;
class TaNodeTreeReader;
class TaNodeTreeWriter;

/// A node of the data tree: a name, an ordered list of children, a mark that it was modified, and
/// the locks that threads hold on it. A TaDataNode carries a value, too.
///
/// A tree belongs to a TaDataManager, which alone changes its shape and its locks: code that reads
/// or changes a node makes a data handle for it first. A lock covers the node and all below it.
///
/// Ownership: a node owns its children, and refers to its parent weakly; a smart pointer or a data
///            handle keeps a node, with all below it, alive beyond its tree.
/// Threads:   each operation is safe on any thread. What it answers holds for as long as the caller
///            has a granted handle on the node; without one it may be outdated at once, and the
///            children may not be iterated.
/// Failure:   only what is said at an operation. Trees may be as wide and as deep as memory allows.
class TABASE_API TaNode : public TuReferenceCounted,
                          public TuIClassName<0, String>,
                          public TuIDumpable<1>,
                          public TuINonCopyable,
                          public virtual IObject
{
    TU_DECLARE_RTTI

public:
    using ChildrenIterator = TaNodeChildren<TaNode>;
    using ConstChildrenIterator = TaNodeChildren<const TaNode>;
    using SChildData = TaNodeChildData;

    static constexpr const char16_t* kNoName = u"__noname";

    TaNode();
    /// Where `serializeLeaves` is false, children without children are not stored; where
    /// `trackModified` is false, the node never says that it is modified.
    TaNode(const String& name, bool serializeLeaves, bool trackModified);
    ~TaNode() override;

    /// Whether the node is stored for its own sake, as data nodes are. Others are stored only
    /// where they lead to one that is.
    virtual bool IsSerializable() const { return false; }

protected:
    /// Replaces the value by a new one of a class known by name. A plain node has none.
    virtual void CreateData(const String& className);

public:
    /// The record of the value's class; of a plain node, its own. A data node without a value
    /// throws TuException.
    virtual const TuRTTI& GetRTTIData() const;

    bool IsKindOfData(const TuRTTI& record) const { return GetRTTIData().IsKindOf(record); }
    const char16_t* GetClassNameData() const { return GetRTTIData().GetClassName(); }

    bool IsSerializeLeaves() const { return m_serializeLeaves; }
    bool IsTrackModified() const { return m_trackModified; }
    /// Whether the node is in the tree of a manager.
    bool IsManaged() const { return m_dataManager.load() != nullptr; }

    /// Null for a root, and for a node in no tree.
    TuSmartPointer<TaNode> GetParent();
    TuSmartPointer<const TaNode> GetParent() const;
    /// The first child of that name, letter case included; null where there is none.
    TuSmartPointer<TaNode> FindChild(const String& name);
    TuSmartPointer<const TaNode> FindChild(const String& name) const;
    bool HasChildren() const { return GetChildrenCount() != 0; }
    std::uint32_t GetChildrenCount() const;
    /// The children in the order in which they came; only with a granted handle on the node.
    ///
    ///     for (TaNode& child : node->GetChildren())
    ///         Show(child.GetName());
    ChildrenIterator GetChildren() { return ChildrenIterator(m_children); }
    ConstChildrenIterator GetChildren() const { return ConstChildrenIterator(m_children); }
    /// Whether `node` is an ancestor of this one; no node is its own. False for null.
    bool IsDescendantOf(const TuSmartPointer<const TaNode>& node) const;

    /// Whether the node is modified, or, where `recursive` is true, any node below it.
    bool IsModified(bool recursive) const;
    /// For the node, or for all nodes below it, too.
    void SetModified(bool modified, bool recursive) { setModified(modified, recursive); }

protected:
    // The two hooks run under the locks of the nodes above, and of the node itself: they must not
    // wait for other threads, nor ask for anything of a node higher up but its name.

    virtual bool isModified() const { return m_trackModified && m_modified.load(); }
    /// Where `recursive` is true, called for each node of a subtree, parents first. The children
    /// follow when the hook of their parent has returned, and only where that has called this one
    /// with `recursive`.
    virtual void setModified(bool modified, bool recursive);

    /// The subtree, a line for each node with its name, class and value: the caller has a granted
    /// handle, or nobody writes.
    void dump(TuStreamWriteASCII& stream) const override;

    /// The value; null where there is none. It is shared, so the node's constness is not its own.
    virtual ISerializable* getData() const { return nullptr; }

private:
    friend class TaDataManager;
    friend class TaNodeTreeReader;
    friend class TaNodeTreeWriter;
    friend class TaLockAttempt;
    friend class TaDataTreeProbe; // the tests look at the books with it
    class Descent;

    // What follows is called under the lock of the manager whose tree it is, if any. So whatever is
    // changed under that lock and one of the node's own can be read under either.

    void addChild(const TuSmartPointer<TaNode>& child);
    /// After it, one addChild and any setParent to this node need no memory.
    void prepareChild();
    /// From its former parent, where it has one, behind the children of `parent`, which is
    /// prepared.
    void moveTo(TaNode& parent) noexcept;
    void setParent(TaNode* parent);
    /// Takes the node's children off it, and the node off its parent.
    void unlink(bool children, bool fromParent);
    void unlinkChildren();
    /// Gives this node, which has no children, those of `other`. Fails only without memory, and
    /// where nobody has ever linked to this node; nothing has changed then.
    void takeChildren(TaNode& other);
    /// For the whole subtree.
    void setDataManager(TaDataManager* manager);
    bool isDescendantOf(const TaNode* node) const;
    TaNode* getParentNode() const { return m_parent.GetUnguarded(); }
    /// The node behind this one in the subtree of `top`, parents first; null behind the last.
    const TaNode* getNext(const TaNode& top) const;

    // The locks, of the whole subtree. An increment that fails has changed nothing.
    void incrementReadCounter(unsigned int threadId);
    void decrementReadCounter(unsigned int threadId);
    void incrementWriteCounter(unsigned int threadId);
    void decrementWriteCounter(unsigned int threadId);
    /// Before the node comes under `newParent`: the locks on its old ancestors no longer cover its
    /// subtree, those on the new ones do. Fails as an increment does.
    void adaptCounters(const TaNode& newParent);
    /// Takes all locks off the subtree.
    void resetReadWriteCounters();
    // Of this node alone.
    void resetReadWriteCounters(unsigned int threadId, SReadWriteCount count);
    bool isLocked() const;
    bool isReadLocked() const;
    bool isWriteLocked() const;
    /// Guarded by the manager's lock, and by the count lock.
    const TaThreadCounts& getThreadManager() const TU_NO_THREAD_SAFETY_ANALYSIS
    {
        return m_threadCounts;
    }

    void changeCounters(unsigned int threadId, std::int64_t read, std::int64_t write);
    /// False, and without effect, where that would take away more than is there.
    bool changeOwnCounters(unsigned int threadId, std::int64_t read, std::int64_t write)
        TU_REQUIRES(m_countLock);
    void signalLocked(bool wasLocked) TU_REQUIRES(m_countLock);
    void destroyBelow();
    /// For `reader`, under the manager's lock: without the values that other threads may change.
    void dumpTree(TuStreamWriteASCII& stream, std::optional<unsigned int> reader) const;
    void dumpLine(TuStreamWriteASCII& stream, std::optional<unsigned int> reader) const;
    bool isWrittenByOthers(unsigned int threadId) const;

    bool m_serializeLeaves; // changed only while the node is read back from a stream
    bool m_trackModified; // likewise
    std::atomic<bool> m_modified{ false };
    bool m_isVisited = false; // by a walk that sets marks; guarded by m_childrenLock
    std::atomic<TaDataManager*> m_dataManager{ nullptr };
    TuList<SChildData> m_children; // guarded by m_childrenLock
    TuWeakPointer<TaNode> m_parent; // guarded by m_childrenLock
    TuList<SChildData>::iterator m_place; // in the parent's list; guarded by the parent's lock
    mutable TuCriticalSection m_childrenLock;
    TuEvent m_unlockedEvent; // set while nobody holds a lock
    std::uint32_t m_readCount TU_GUARDED_BY(m_countLock) = 0; // of all threads
    std::uint32_t m_writeCount TU_GUARDED_BY(m_countLock) = 0;
    TaThreadCounts m_threadCounts TU_GUARDED_BY(m_countLock);
    mutable TuCriticalSection m_countLock;
};

#include "platform/platformmacrospop.h"
