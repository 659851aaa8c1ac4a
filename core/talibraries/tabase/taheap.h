#pragma once

#include "groundwork/tuassert.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

/// What lies in a heap: a node, which the heap only carries, and the key by which it is ordered.
template <class Node, class Key> struct TaHeapElementSimple
{
    using NodeType = Node;
    using KeyType = Key;

    Node node;
    Key key;
};

/// Which key comes first: the smallest.
struct TaHeapPolicyPrecedenceMin
{
    template <class Key> static bool Precedes(const Key& a, const Key& b) { return a < b; }
};

/// Which key comes first: the largest.
struct TaHeapPolicyPrecedenceMax
{
    template <class Key> static bool Precedes(const Key& a, const Key& b) { return b < a; }
};

/// What a heap knows of the places of its nodes: nothing. Keys cannot be changed.
struct TaHeapPolicyOperatorSimple
{
    template <class Node> void SetPosition(const Node&, std::size_t) { }
    template <class Node> void ClearPosition(const Node&) { }
};

/// The number by which a node is known to an updatable heap: a number is its own, an object has
/// GetIndex(). Dense, from 0.
inline std::size_t TaHeapIndexOf(std::size_t node) { return node; }
template <class Node> std::size_t TaHeapIndexOf(const Node* node) { return node->GetIndex(); }

/// What a heap knows of the places of its nodes: the place of each, so that keys can be changed.
class TaHeapPolicyOperatorUpdatable
{
public:
    static constexpr std::uint32_t kNoPosition = std::numeric_limits<std::uint32_t>::max();

    /// For nodes with numbers below `count`, none of which is in the heap.
    void SetNodeCount(std::size_t count) { m_positions.assign(count, kNoPosition); }

    template <class Node> void SetPosition(const Node& node, std::size_t position)
    {
        m_positions[TaHeapIndexOf(node)] = static_cast<std::uint32_t>(position);
    }
    template <class Node> void ClearPosition(const Node& node)
    {
        m_positions[TaHeapIndexOf(node)] = kNoPosition;
    }
    /// kNoPosition for a node that is not in the heap.
    template <class Node> std::uint32_t GetPosition(const Node& node) const
    {
        return m_positions[TaHeapIndexOf(node)];
    }

private:
    std::vector<std::uint32_t> m_positions;
};

/// A binary heap: gives its elements in the order of their keys, in log n steps each.
///
/// The order among equal keys is that of the heap, the same on every system: an element rises past
/// a parent that it precedes, and sinks below the child that comes first, the left one of equal
/// children.
///
///     TaHeap<TaHeapElementSimple<unsigned int, float>> heap;
///     heap.Push({ 3, 0.5f });
///     const unsigned int first = heap.Pop().node;
///
/// With TaHeapPolicyOperatorUpdatable a node is in the heap at most once, and its key can be
/// changed: call SetNodeCount first.
///
/// Threads: as a standard container: many readers, or one writer.
/// Failure: std::bad_alloc from Push and SetNodeCount; the heap is then as it was. Taking from an
///          empty heap and keys without an order (NaN) are the caller's fault; the first is found
///          by the assertions of a debug build.
template <class Element, class Precedence = TaHeapPolicyPrecedenceMin,
    class Operator = TaHeapPolicyOperatorSimple>
class TaHeap
{
public:
    using Node = typename Element::NodeType;
    using Key = typename Element::KeyType;

    bool IsEmpty() const { return m_elements.empty(); }
    std::size_t GetCount() const { return m_elements.size(); }
    const Element& GetTop() const
    {
        TU_ASSERT(!IsEmpty(), "an empty heap has no first element");
        return m_elements.front();
    }

    void Push(const Element& element)
    {
        m_elements.push_back(element);
        rise(m_elements.size() - 1, m_elements.back()); // `element` may have been one of them
    }
    Element Pop();
    void RemoveAll()
    {
        for (const Element& element : m_elements) {
            m_operator.ClearPosition(element.node);
        }
        m_elements.clear();
    }

    /// For an updatable heap, once, before nodes with numbers below `count` are pushed.
    void SetNodeCount(std::size_t count)
    {
        m_elements.clear();
        m_operator.SetNodeCount(count);
    }
    bool Contains(const Node& node) const
    {
        return m_operator.GetPosition(node) != Operator::kNoPosition;
    }
    /// Gives a node in the heap another key, which does not come after the one that it has; pushes
    /// any other node.
    void PushOrUpdate(const Node& node, const Key& key)
    {
        const std::uint32_t position = m_operator.GetPosition(node);
        if (position == Operator::kNoPosition) {
            Push({ node, key });
        } else {
            TU_ASSERT(!Precedence::Precedes(m_elements[position].key, key),
                "a key is only moved towards the front");
            rise(position, { node, key });
        }
    }

private:
    void place(std::size_t position, const Element& element)
    {
        m_elements[position] = element;
        m_operator.SetPosition(element.node, position);
    }
    void rise(std::size_t position, Element element);
    void sink(const Element& element);

    std::vector<Element> m_elements;
    [[no_unique_address]] Operator m_operator;
};

template <class Element, class Precedence, class Operator>
inline Element TaHeap<Element, Precedence, Operator>::Pop()
{
    TU_ASSERT(!IsEmpty(), "an empty heap has no first element");
    const Element first = m_elements.front();
    const Element last = m_elements.back();
    m_elements.pop_back();
    m_operator.ClearPosition(first.node);
    if (!m_elements.empty()) {
        sink(last);
    }
    return first;
}

template <class Element, class Precedence, class Operator>
inline void TaHeap<Element, Precedence, Operator>::rise(std::size_t position, Element element)
{
    while (position != 0) {
        const std::size_t parent = (position - 1) / 2;
        if (!Precedence::Precedes(element.key, m_elements[parent].key)) {
            break;
        }
        place(position, m_elements[parent]);
        position = parent;
    }
    place(position, element);
}

/// From the top, which is free.
template <class Element, class Precedence, class Operator>
inline void TaHeap<Element, Precedence, Operator>::sink(const Element& element)
{
    const std::size_t count = m_elements.size();
    std::size_t position = 0;
    for (;;) {
        std::size_t child = 2 * position + 1;
        if (child >= count) {
            break;
        }
        if (child + 1 < count) {
            // A number and not a branch, which could not be foretold.
            child += static_cast<std::size_t>(
                Precedence::Precedes(m_elements[child + 1].key, m_elements[child].key));
        }
        if (!Precedence::Precedes(m_elements[child].key, element.key)) {
            break;
        }
        place(position, m_elements[child]);
        position = child;
    }
    place(position, element);
}
