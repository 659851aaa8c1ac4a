#pragma once

#include "groundwork/tulistiterator.h"

#include <cstddef>
#include <iterator>
#include <type_traits>

/// Walks a map or set: bucket by bucket, each chain from its head. For a map it gives the
/// association of a key with its value, for a set the key. Flags as for TuListIterator.
/// It stays valid until its own entry is removed.
template <class Table, class Element, class Association, int Flags> class TuHashIterator
{
public:
    static constexpr bool kIsMutable = (Flags & eI_Mutable) != 0;

    using iterator_category = std::forward_iterator_tag;
    using value_type = std::remove_const_t<Element>;
    using difference_type = std::ptrdiff_t;
    using reference = std::conditional_t<kIsMutable, Element&, const Element&>;
    using pointer = std::remove_reference_t<reference>*;

    TuHashIterator() = default;
    /// Read-only from mutable.
    template <int Other>
    requires(!kIsMutable && (Other & eI_Mutable) != 0)
        TuHashIterator(const TuHashIterator<Table, Element, Association, Other>& other) // NOLINT
        : m_node(other.m_node)
        , m_table(other.m_table)
    {
    }

    reference operator*() const { return m_node->getElement(); }
    pointer operator->() const { return &m_node->getElement(); }

    TuHashIterator& operator++()
    {
        m_node = m_table->nextNode(m_node);
        return *this;
    }
    TuHashIterator operator++(int)
    {
        const TuHashIterator before(*this);
        ++*this;
        return before;
    }

    friend bool operator==(const TuHashIterator& a, const TuHashIterator& b)
    {
        return a.m_node == b.m_node;
    }

private:
    friend Table;
    template <class, class, class, int> friend class TuHashIterator;

    TuHashIterator(Association* node, const Table* table)
        : m_node(node)
        , m_table(table)
    {
    }

    Association* m_node = nullptr; // null at the end
    const Table* m_table = nullptr;
};
