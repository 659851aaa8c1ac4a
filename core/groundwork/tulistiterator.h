#pragma once

#include <cstddef>
#include <iterator>
#include <type_traits>

/// The flags of containers and of their iterators, added up.
enum ETuIteration
{
    eI_Iterable = 1, // the container can be walked
    eI_Mutable = 16, // elements may be changed through iterators
};

/// Walks a list both ways. Flags 17 gives elements that may be changed, flags 1 constant ones.
/// It stays valid until its own element is removed.
template <class List, int Flags> class TuListIterator
{
    using Node = typename List::Node;

public:
    static constexpr bool kIsMutable = (Flags & eI_Mutable) != 0;

    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = typename List::value_type;
    using difference_type = std::ptrdiff_t;
    using reference = std::conditional_t<kIsMutable, value_type&, const value_type&>;
    using pointer = std::remove_reference_t<reference>*;

    TuListIterator() = default;
    /// Read-only from mutable.
    template <int Other>
    requires(!kIsMutable && (Other & eI_Mutable) != 0)
        TuListIterator(const TuListIterator<List, Other>& other) // NOLINT
        : m_node(other.m_node)
        , m_list(other.m_list)
    {
    }

    reference operator*() const { return m_node->element; }
    pointer operator->() const { return &m_node->element; }

    TuListIterator& operator++()
    {
        m_node = nextOf(m_node);
        return *this;
    }
    TuListIterator operator++(int)
    {
        const TuListIterator before(*this);
        ++*this;
        return before;
    }
    /// From the end, steps to the tail.
    TuListIterator& operator--()
    {
        m_node = m_node != nullptr ? m_node->previous : m_list->m_tail;
        return *this;
    }
    TuListIterator operator--(int)
    {
        const TuListIterator before(*this);
        --*this;
        return before;
    }

    friend bool operator==(const TuListIterator& a, const TuListIterator& b)
    {
        return a.m_node == b.m_node;
    }

private:
    friend List;
    template <class, int> friend class TuListIterator;

    TuListIterator(Node* node, const List* list)
        : m_node(node)
        , m_list(list)
    {
    }

    /// Nodes made one after the other mostly lie so in their block. Where the guess is right the
    /// processor goes on from it and need not wait for the link to be read, which halves the time
    /// of a walk; in a long list of which many nodes are gone, wrong guesses can double it. The
    /// compiler must not learn that guess and link are the same: it would go by the link again.
    static Node* nextOf(Node* node)
    {
        Node* const next = node->next;
        Node* guess = node + 1;
        if (guess != next) {
            return next;
        }
        asm("" : "+r"(guess));
        return guess;
    }

    Node* m_node = nullptr; // null at the end
    const List* m_list = nullptr;
};
