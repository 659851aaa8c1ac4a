#include "tabase/tagraphconnectionlist.h"

#include "tabase/tagraphconnection.h"
#include "tabase/tagraphweightindex.h"

#include <bit>
#include <cmath>
#include <new>

namespace {

/// From how many connections on a list has an index: a walk over fewer takes less time than the
/// index, and most lists are short.
constexpr unsigned int kLongList = 128;

} // namespace

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

TaGraphConnectionList::Node* TaGraphConnectionList::add(
    const TuSmartPointer<TaGraphConnection>& connection)
{
    const float weight = connection->GetWeight();
    Node* const next = m_index != nullptr && !std::isnan(weight)
        ? behind(m_index->FindLastNotGreater(weight))
        : findBehindNotGreater(getTailNode(), weight);
    Node* const node = insertBefore(next, connection);
    if (m_index != nullptr) {
        addToIndex(node);
    } else if (GetCount() >= kLongList && std::has_single_bit(GetCount())) {
        makeIndex();
    }
    return node;
}

void TaGraphConnectionList::remove(Node* node)
{
    beforeChange(node);
    removeNode(node);
}

void TaGraphConnectionList::beforeChange(Node* node)
{
    if (m_index != nullptr) {
        m_index->Remove(node);
    }
}

void TaGraphConnectionList::afterChange(Node* node, float oldWeight)
{
    if (std::isnan(oldWeight)) {
        List::Sort(); // what a NaN has kept apart may now be out of order
        return;
    }
    const float weight = node->element->GetWeight();
    const bool isTooFar
        = node->previous != nullptr && weight < node->previous->element->GetWeight();
    const bool isTooNear = node->next != nullptr && node->next->element->GetWeight() < weight;
    // What a bubble sort would do, which never swaps equal weights: the connection moves until it
    // is behind, or before, the first one that is not heavier, or not lighter.
    if (isTooFar) {
        moveBefore(node,
            m_index != nullptr ? behind(m_index->FindLastNotGreater(weight))
                               : findBehindNotGreater(node->previous, weight));
    } else if (isTooNear) {
        moveBefore(node,
            m_index != nullptr ? behind(m_index->FindLastSmaller(weight))
                               : findNotSmaller(node->next, weight));
    }
    if (m_index != nullptr) {
        addToIndex(node);
    }
}

/// What comes behind `node`, null for the place before all.
TaGraphConnectionList::Node* TaGraphConnectionList::behind(const Node* node) const
{
    return node != nullptr ? node->next : getHeadNode();
}

/// What comes behind the last node up to `last` that is not heavier.
TaGraphConnectionList::Node* TaGraphConnectionList::findBehindNotGreater(
    const Node* last, float weight) const
{
    while (last != nullptr && weight < last->element->GetWeight()) {
        last = last->previous;
    }
    return behind(last);
}

/// The first node from `first` on that is not lighter.
TaGraphConnectionList::Node* TaGraphConnectionList::findNotSmaller(Node* first, float weight)
{
    while (first != nullptr && first->element->GetWeight() < weight) {
        first = first->next;
    }
    return first;
}

void TaGraphConnectionList::makeIndex() noexcept
{
    try {
        m_index = TaGraphWeightIndex::Make(getHeadNode());
    } catch (const std::bad_alloc&) {
        m_index.reset(); // it is only slower without
    }
}

/// A node that has been linked in its place.
void TaGraphConnectionList::addToIndex(Node* node) noexcept
{
    try {
        if (std::isnan(node->element->GetWeight())) {
            m_index.reset();
        } else {
            m_index->Add(node);
        }
    } catch (const std::bad_alloc&) {
        m_index.reset();
    }
}
