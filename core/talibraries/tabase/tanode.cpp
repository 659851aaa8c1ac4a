#include "tabase/tanode.h"

#include "groundwork/iserializable.h"
#include "groundwork/tuarray.h"
#include "groundwork/tustreamwriteascii.h"
#include "tabase/tanodedescent.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace {

/// A node's locks are taken from parent to child, and who is whose child changes.
using Guard = TuCriticalSectionAutoInAnyOrder;

constexpr unsigned int kChildrenBlockSize = 10;

/// What a dump needs of a node, taken under the locks.
struct SDumpLine
{
    TuSmartPointer<const TaNode> node; // null for the top, which may have no references at all
    std::uint32_t depth = 0;
    bool isLast = true; // among the children of its parent
};

/// A name or value may hold anything: control units would break the lines of the tree.
CString makePrintable(const CString& text)
{
    constexpr std::u16string_view kDigits = u"0123456789ABCDEF";
    CString printable;
    for (const char16_t unit : text) {
        if (unit >= 0x20 && unit != 0x7F) {
            printable += unit;
        } else {
            printable += u"\\x";
            printable += kDigits[unit >> 4];
            printable += kDigits[unit & 0xF];
        }
    }
    return printable;
}

} // namespace

TU_DEFINE_RTTI_ROOT(TaNode, nullptr, nullptr);

// Windows exports the constants of a class where a source repeats them.
constexpr const char16_t* TaNode::kNoName;

TaNode::TaNode()
    : TaNode(kNoName, true, true)
{
}

TaNode::TaNode(const String& name, bool serializeLeaves, bool trackModified)
    : TuIClassName<0, String>(name)
    , m_serializeLeaves(serializeLeaves)
    , m_trackModified(trackModified)
    , m_children(kChildrenBlockSize)
    , m_unlockedEvent(true)
{
    m_unlockedEvent.Set();
}

TaNode::~TaNode() { destroyBelow(); }

// From the leaves up, in a loop: if each node destroyed its own children, a deep tree would need
// the stack for it. A node that somebody else holds, too, keeps what is below it.
void TaNode::destroyBelow()
{
    TaNode* node = this;
    for (;;) {
        TuSmartPointer<TaNode> child;
        {
            const Guard guard(node->m_childrenLock);
            if (!node->m_children.IsEmpty()) {
                TaNode& first = *node->m_children.GetHead().node;
                if (first.getReferenceCounter().GetCount() == 1 && first.HasChildren()) {
                    node = &first;
                    continue;
                }
                child = node->m_children.RemoveHead().node;
            }
        }
        if (!child.IsNull()) {
            child->setParent(nullptr);
        } else if (node != this) {
            node = node->getParentNode();
        } else {
            return;
        }
    }
}

void TaNode::CreateData(const String&) { }

const TuRTTI& TaNode::GetRTTIData() const { return GetRTTI(); }

TuSmartPointer<TaNode> TaNode::GetParent()
{
    const Guard guard(m_childrenLock);
    return m_parent.Lock();
}

TuSmartPointer<const TaNode> TaNode::GetParent() const
{
    return const_cast<TaNode*>(this)->GetParent();
}

TuSmartPointer<TaNode> TaNode::FindChild(const String& name)
{
    const Guard guard(m_childrenLock);
    const auto found = std::find_if(m_children.begin(), m_children.end(),
        [&name](const SChildData& child) { return child.node->GetName() == name; });
    return found != m_children.end() ? found->node : TuSmartPointer<TaNode>();
}

TuSmartPointer<const TaNode> TaNode::FindChild(const String& name) const
{
    return const_cast<TaNode*>(this)->FindChild(name);
}

std::uint32_t TaNode::GetChildrenCount() const
{
    const Guard guard(m_childrenLock);
    return m_children.GetCount();
}

bool TaNode::IsDescendantOf(const TuSmartPointer<const TaNode>& node) const
{
    TuSmartPointer<const TaNode> ancestor = node.IsNull() ? nullptr : GetParent();
    while (!ancestor.IsNull() && ancestor != node) {
        ancestor = ancestor->GetParent();
    }
    return !ancestor.IsNull();
}

bool TaNode::isDescendantOf(const TaNode* node) const
{
    const TaNode* ancestor = getParentNode();
    while (ancestor != nullptr && ancestor != node) {
        ancestor = ancestor->getParentNode();
    }
    return ancestor != nullptr;
}

bool TaNode::IsModified(bool recursive) const
{
    const bool isOwn = isModified(); // asked once: another thread may change the answer
    if (isOwn || !recursive) {
        return isOwn;
    }
    Descent walk(*this, &TaNode::m_childrenLock);
    do {
        walk.Next(true);
    } while (walk.Get() != nullptr && !walk.Get()->isModified());
    return walk.Get() != nullptr;
}

void TaNode::setModified(bool modified, bool recursive)
{
    m_modified.store(modified);
    if (!recursive) {
        return;
    }
    Descent walk(*this, &TaNode::m_childrenLock);
    if (std::exchange(m_isVisited, false)) {
        return; // the walk that called this hook goes on with the children
    }
    walk.Next(true);
    while (TaNode* const node = walk.Get()) {
        node->m_isVisited = true;
        try {
            node->setModified(modified, true);
        } catch (...) {
            node->m_isVisited = false;
            throw;
        }
        walk.Next(!std::exchange(node->m_isVisited, false));
    }
}

void TaNode::addChild(const TuSmartPointer<TaNode>& child)
{
    const Guard guard(m_childrenLock);
    child->m_place = m_children.Add({ child });
}

void TaNode::prepareChild()
{
    const TuWeakPointer<TaNode> firstLink(this); // the first one makes the block for all
    const Guard guard(m_childrenLock);
    m_children.Add({ nullptr }); // nobody sees it, and its room is the next to be taken
    m_children.RemoveTail();
}

// A walk that holds the lock of a parent goes by the place of the child and its link to the parent,
// so both change under that lock. For a moment the node hangs nowhere: with the locks of two
// parents held at once, the order of locks would depend on where these are in the tree.
void TaNode::moveTo(TaNode& parent) noexcept
{
    const TuSmartPointer<TaNode> self(this); // its parent may hold the last reference
    unlink(false, true);
    const Guard guard(parent.m_childrenLock);
    parent.addChild(self);
    setParent(&parent);
}

void TaNode::setParent(TaNode* parent)
{
    TuSmartPointer<TaNode> former; // goes when the lock has been left
    const Guard guard(m_childrenLock);
    former = m_parent.Lock();
    if (parent == nullptr || former != parent) {
        m_parent.Set(parent);
    }
}

void TaNode::unlink(bool children, bool fromParent)
{
    if (children) {
        unlinkChildren();
    }
    if (!fromParent) {
        return;
    }
    const TuSmartPointer<TaNode> self(this); // its parent may hold the last reference
    if (const TuSmartPointer<TaNode> parent = GetParent(); !parent.IsNull()) {
        const Guard guard(parent->m_childrenLock);
        parent->m_children.Erase(std::exchange(m_place, {}));
        setParent(nullptr);
    }
}

void TaNode::unlinkChildren()
{
    TuList<SChildData> children(kChildrenBlockSize); // they go when the lock has been left
    const Guard guard(m_childrenLock);
    m_children.Swap(children);
    for (const SChildData& child : children) {
        child.node->m_place = {};
        child.node->setParent(nullptr);
    }
}

void TaNode::takeChildren(TaNode& other)
{
    const Guard guard(m_childrenLock);
    const Guard otherGuard(other.m_childrenLock);
    for (const SChildData& child : other.m_children) {
        child.node->setParent(this); // only the first can fail, for the block of the weak links
    }
    m_children.Swap(other.m_children);
    for (auto place = m_children.begin(); place != m_children.end(); ++place) {
        place->node->m_place = place;
    }
}

void TaNode::setDataManager(TaDataManager* manager)
{
    const TaNode* node = this;
    for (; node != nullptr; node = node->getNext(*this)) {
        const_cast<TaNode*>(node)->m_dataManager.store(manager);
    }
}

const TaNode* TaNode::getNext(const TaNode& top) const
{
    if (!m_children.IsEmpty()) {
        return m_children.GetHead().node.Get();
    }
    for (const TaNode* node = this; node != &top; node = node->getParentNode()) {
        if (const auto next = std::next(node->m_place);
            next != node->getParentNode()->m_children.end()) {
            return next->node.Get();
        }
    }
    return nullptr;
}

void TaNode::incrementReadCounter(unsigned int threadId) { changeCounters(threadId, 1, 0); }

void TaNode::decrementReadCounter(unsigned int threadId) { changeCounters(threadId, -1, 0); }

void TaNode::incrementWriteCounter(unsigned int threadId) { changeCounters(threadId, 0, 1); }

void TaNode::decrementWriteCounter(unsigned int threadId) { changeCounters(threadId, 0, -1); }

// A thread without such a lock on a node has none on what is below it through that node either:
// what it holds there it has taken there, and keeps.
void TaNode::changeCounters(unsigned int threadId, std::int64_t read,
    std::int64_t write) TU_NO_THREAD_SAFETY_ANALYSIS // the walk holds the lock of each node
{
    Descent walk(*this, &TaNode::m_countLock);
    try {
        while (TaNode* const node = walk.Get()) {
            walk.Next(node->changeOwnCounters(threadId, read, write));
        }
    } catch (...) {
        const TaNode* const failed = walk.Get();
        Descent back(*this, &TaNode::m_countLock);
        while (back.Get() != failed) {
            back.Next(back.Get()->changeOwnCounters(threadId, -read, -write));
        }
        throw;
    }
}

bool TaNode::changeOwnCounters(unsigned int threadId, std::int64_t read, std::int64_t write)
{
    if (read < 0 || write < 0) {
        const SReadWriteCount held = m_threadCounts.Get(threadId);
        if (held.read + read < 0 || held.write + write < 0) {
            return false;
        }
    }
    m_threadCounts.Add(threadId, read, write);
    const bool wasLocked = (m_readCount | m_writeCount) != 0;
    m_readCount = static_cast<std::uint32_t>(m_readCount + read);
    m_writeCount = static_cast<std::uint32_t>(m_writeCount + write);
    signalLocked(wasLocked);
    return true;
}

// Set only when nobody holds any lock: a waiter that was woken by the last read lock while a write
// lock stays would find the node locked, and the event set, again and again.
void TaNode::signalLocked(bool wasLocked)
{
    const bool isLocked = (m_readCount | m_writeCount) != 0;
    if (wasLocked && !isLocked) {
        m_unlockedEvent.Set();
    } else if (!wasLocked && isLocked) {
        m_unlockedEvent.Reset();
    }
}

// On each node of the subtree lie the locks that were taken on the nodes from its top down to
// there, and all those that lie on the parent. So for each thread the difference of the two parents
// is the same for the whole subtree.
void TaNode::adaptCounters(const TaNode& newParent)
{
    struct SChange
    {
        unsigned int threadId;
        std::int64_t read;
        std::int64_t write;
    };
    TuArray<SChange> changes;
    const TaNode* const parent = getParentNode();
    newParent.getThreadManager().ForEach([&](unsigned int threadId, SReadWriteCount count) {
        const SReadWriteCount old
            = parent != nullptr ? parent->getThreadManager().Get(threadId) : SReadWriteCount();
        changes.Add({ threadId, std::int64_t{ count.read } - old.read,
            std::int64_t{ count.write } - old.write });
    });
    if (parent != nullptr) {
        parent->getThreadManager().ForEach([&](unsigned int threadId, SReadWriteCount old) {
            if (newParent.getThreadManager().Get(threadId).IsZero()) {
                changes.Add({ threadId, -std::int64_t{ old.read }, -std::int64_t{ old.write } });
            }
        });
    }
    for (unsigned int i = 0; i < changes.GetSize(); ++i) {
        try {
            changeCounters(changes[i].threadId, changes[i].read, changes[i].write);
        } catch (...) {
            while (i-- != 0) {
                changeCounters(changes[i].threadId, -changes[i].read, -changes[i].write);
            }
            throw;
        }
    }
}

void TaNode::resetReadWriteCounters() TU_NO_THREAD_SAFETY_ANALYSIS
{
    for (Descent walk(*this, &TaNode::m_countLock); walk.Get() != nullptr; walk.Next(true)) {
        while (
            const std::optional<unsigned int> thread = walk.Get()->m_threadCounts.GetAnyThread()) {
            walk.Get()->resetReadWriteCounters(*thread, SReadWriteCount());
        }
    }
}

void TaNode::resetReadWriteCounters(unsigned int threadId, SReadWriteCount count)
{
    const Guard guard(m_countLock);
    const SReadWriteCount held = m_threadCounts.Get(threadId);
    changeOwnCounters(
        threadId, std::int64_t{ count.read } - held.read, std::int64_t{ count.write } - held.write);
}

bool TaNode::isLocked() const
{
    const Guard guard(m_countLock);
    return (m_readCount | m_writeCount) != 0;
}

bool TaNode::isReadLocked() const
{
    const Guard guard(m_countLock);
    return m_readCount != 0;
}

bool TaNode::isWriteLocked() const
{
    const Guard guard(m_countLock);
    return m_writeCount != 0;
}

// The stream may be anybody's, so nothing is written under a lock.
void TaNode::dump(TuStreamWriteASCII& stream) const { dumpTree(stream, std::nullopt); }

void TaNode::dumpTree(TuStreamWriteASCII& stream, std::optional<unsigned int> reader) const
{
    TuArray<SDumpLine> lines;
    for (Descent walk(*this, &TaNode::m_childrenLock); walk.Get() != nullptr; walk.Next(true)) {
        lines.Add(
            { walk.Get() != this ? walk.Get() : nullptr, walk.GetDepth(), walk.IsLastChild() });
    }
    std::u16string lead; // one piece for each level between the top and the parent of a node
    constexpr std::u16string_view kGoesOn = u" |  ";
    constexpr std::u16string_view kEnded = u"    ";
    for (const SDumpLine& line : lines) {
        if (line.depth != 0) {
            lead.resize((line.depth - 1) * kGoesOn.size());
            stream << lead.c_str() << u" |-- ";
            lead += line.isLast ? kEnded : kGoesOn;
        }
        (line.node.IsNull() ? this : line.node.Get())->dumpLine(stream, reader);
    }
}

void TaNode::dumpLine(TuStreamWriteASCII& stream, std::optional<unsigned int> reader) const
{
    stream << makePrintable(GetName()) << u" (" << GetClassName() << u")";
    if (const auto* value = dynamic_cast<const TuIDumpable<1>*>(getData())) {
        if (reader && isWrittenByOthers(*reader)) {
            stream << u", being written";
        } else {
            stream << u" = " << makePrintable(value->ToString());
        }
    }
    stream << (isModified() ? u", modified\n" : u"\n");
}

bool TaNode::isWrittenByOthers(unsigned int threadId) const
{
    const Guard guard(m_countLock);
    return m_writeCount != m_threadCounts.Get(threadId).write;
}
