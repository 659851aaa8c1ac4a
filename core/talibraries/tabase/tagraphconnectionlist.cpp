#include "tabase/tagraphconnectionlist.h"

#include "groundwork/tucriticalsection.h"
#include "tabase/tagraphconnection.h"
#include "tabase/tagraphweightindex.h"

#include <cmath>
#include <limits>
#include <new>
#include <utility>

namespace {

/// Up to so many connections that were added last are put in their places one by one.
constexpr unsigned int kFew = 8;
/// A connection that would have to pass more than this is moved by an index.
constexpr unsigned int kFar = 64;

/// Held while a list is put in order for readers, of which there may be several.
TuCriticalSection& settlingLock()
{
    static TuCriticalSection& s_lock = *new TuCriticalSection; // readers may outlive statics
    return s_lock;
}

} // namespace

const unsigned int TaGraphConnectionList::kBlockSize; // NOLINT: for a library that exports it

bool TaGraphConnectionLess::operator()(
    const TuSmartPointer<TaGraphConnection>& a, const TuSmartPointer<TaGraphConnection>& b) const
{
    return a->GetWeight() < b->GetWeight();
}

TaGraphConnectionList::TaGraphConnectionList(unsigned int blockSize)
    : List(TaGraphConnectionLess(), blockSize)
{
}

TaGraphConnectionList::~TaGraphConnectionList() = default;

void TaGraphConnectionList::AddConnection(const TuSmartPointer<TaGraphConnection>& connection)
{
    List::Add(connection);
}

bool TaGraphConnectionList::RemoveConnection(const TuSmartPointer<TaGraphConnection>& connection)
{
    for (Node* node = getHeadNode(); node != nullptr; node = node->next) {
        if (node->element.Get() == connection.Get()) {
            removeNode(node);
            return true;
        }
    }
    return false;
}

void TaGraphConnectionList::RemoveAllConnections() { List::RemoveAll(); }

void TaGraphConnectionList::Sort() { List::Sort(); }

void TaGraphConnectionList::useNodes(const TuSmartPointer<PlexManager>& manager)
{
    if (getPlexManager().IsNull()) {
        List other(manager);
        swapNodes(other);
    }
}

TaGraphConnectionList::Node* TaGraphConnectionList::append(
    TuSmartPointer<TaGraphConnection> connection)
{
    m_index.reset();
    if (std::isnan(connection->GetWeight())) {
        settle();
        m_hasNaN = true;
    }
    Node* const node = insertBefore(nullptr, std::move(connection));
    if (m_hasNaN) {
        moveBack(node);
    } else if (m_firstUnsettled.load(std::memory_order_relaxed) == nullptr) {
        m_firstUnsettled.store(node, std::memory_order_relaxed);
    }
    return node;
}

void TaGraphConnectionList::remove(Node* node)
{
    if (m_index != nullptr) {
        m_index->Remove(node);
    }
    if (m_firstUnsettled.load(std::memory_order_relaxed) == node) {
        m_firstUnsettled.store(node->next, std::memory_order_relaxed);
    }
    removeNode(node);
    m_hasNaN = m_hasNaN && !IsEmpty();
}

void TaGraphConnectionList::beforeChange(const Node* node)
{
    settle();
    if (m_index != nullptr) {
        m_index->Remove(node);
    }
}

/// What a bubble sort would do, which never swaps equal weights.
void TaGraphConnectionList::afterChange(Node* node)
{
    m_hasNaN = m_hasNaN || std::isnan(node->element->GetWeight());
    if (m_hasNaN) {
        m_index.reset();
        List::Sort(); // what a NaN has kept apart, and no longer does, comes into order, too
    } else if (m_index != nullptr || !moveWithin(node, kFar)) {
        moveByIndex(node);
    }
}

/// Null is neither.
bool TaGraphConnectionList::isSmaller(const Node* a, const Node* b)
{
    return a != nullptr && b != nullptr && a->element->GetWeight() < b->element->GetWeight();
}

/// To its place, the only node that is not there; false where that is further away.
bool TaGraphConnectionList::moveWithin(Node* node, unsigned int mostSteps)
{
    Node* next = node->next;
    unsigned int steps = 0;
    if (isSmaller(node, node->previous)) {
        for (next = node->previous; isSmaller(node, next->previous) && steps != mostSteps;
             ++steps) {
            next = next->previous;
        }
    } else {
        for (; isSmaller(next, node) && steps != mostSteps; ++steps) {
            next = next->next;
        }
    }
    if (steps != mostSteps) {
        moveBefore(node, next);
    }
    return steps != mostSteps;
}

void TaGraphConnectionList::moveByIndex(Node* node)
{
    const float weight = node->element->GetWeight();
    try {
        if (m_index == nullptr) {
            m_index = std::make_unique<TaGraphWeightIndex>(getHeadNode(), node);
        }
        if (isSmaller(node, node->previous)) {
            moveBehind(node, m_index->FindLastNotGreater(weight));
        } else if (isSmaller(node->next, node)) {
            moveBehind(node, m_index->FindLastSmaller(weight));
        }
        m_index->Add(node);
    } catch (const std::bad_alloc&) {
        m_index.reset();
        moveWithin(node, std::numeric_limits<unsigned int>::max()); // which only takes longer
    }
}

/// Null is the place before all.
void TaGraphConnectionList::moveBehind(Node* node, Node* previous)
{
    moveBefore(node, previous != nullptr ? previous->next : getHeadNode());
}

/// Behind the first node before it that is not heavier.
void TaGraphConnectionList::moveBack(Node* node)
{
    Node* next = node;
    while (isSmaller(node, next->previous)) {
        next = next->previous;
    }
    if (next != node) {
        moveBefore(node, next);
    }
}

/// Several readers may come here at once.
void TaGraphConnectionList::settleForReaders()
{
    const TuCriticalSectionAuto guard(settlingLock());
    settle();
}

void TaGraphConnectionList::settle()
{
    Node* const first = m_firstUnsettled.load(std::memory_order_relaxed);
    if (first == nullptr) {
        return;
    }
    unsigned int count = 0;
    for (const Node* node = first; node != nullptr && count <= kFew; node = node->next) {
        ++count;
    }
    if (count <= kFew) {
        for (Node* node = first; node != nullptr;) {
            Node* const next = node->next;
            moveBack(node);
            node = next;
        }
    } else {
        TaGraphConnectionLess less;
        mergeSort(first, less);
    }
    m_firstUnsettled.store(nullptr, std::memory_order_release); // all of the above is done
}
