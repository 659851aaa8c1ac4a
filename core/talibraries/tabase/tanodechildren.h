#pragma once

#include "groundwork/tulist.h"
#include "groundwork/tusmartpointer.h"

#include <cstddef>
#include <iterator>
#include <type_traits>

class TaNode;

/// A node's entry in the list of its parent, which owns it.
struct TaNodeChildData
{
    TuSmartPointer<TaNode> node;
};

/// The children of a node, to be walked once; `Node` is TaNode, or const TaNode to read only.
///
/// It is a range, an iterator, and a question whether there is one more:
///
///     for (auto child = node->GetChildren(); child; ++child)
///         child->SetModified(false, true);
///
/// Ownership: none; the list stays the node's. An entry that is removed must not be the current
///            one; others may come and go.
/// Threads:   the caller holds a granted handle on the node.
template <class Node> class TaNodeChildren
{
    using List = TuList<TaNodeChildData>;

public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Node;
    using difference_type = std::ptrdiff_t;
    using reference = Node&;
    using pointer = Node*;

    TaNodeChildren() = default;
    explicit TaNodeChildren(const List& children)
        : m_current(children.begin())
        , m_end(children.end())
    {
    }

    explicit operator bool() const { return m_current != m_end; }
    Node& operator*() const { return *m_current->node; }
    Node* operator->() const { return m_current->node.Get(); }
    TaNodeChildren& operator++()
    {
        ++m_current;
        return *this;
    }
    TaNodeChildren operator++(int)
    {
        const TaNodeChildren before(*this);
        ++m_current;
        return before;
    }
    friend bool operator==(const TaNodeChildren& a, const TaNodeChildren& b)
    {
        return a.m_current == b.m_current;
    }

    TaNodeChildren begin() const { return *this; }
    TaNodeChildren end() const
    {
        TaNodeChildren behind(*this);
        behind.m_current = m_end;
        return behind;
    }

private:
    List::const_iterator m_current;
    List::const_iterator m_end;
};
