#pragma once

#include "groundwork/tuarray.h"
#include "groundwork/tulistbaseintermediate.h"

#include <algorithm>
#include <functional>
#include <initializer_list>

/// A list that keeps its elements in order. Equal elements stay in the order in which they were
/// added. The search for the place starts at the tail: adding in order costs nothing.
///
/// Whoever changes elements through iterators calls Sort() afterwards. Assignment and Swap exchange
/// the comparison, too, and need one that can be assigned. Otherwise as TuList.
template <class T, int Flags = eI_Iterable + eI_Mutable, class Size = unsigned int,
    class Less = std::less<T>, class Linking = TuListPolicyDoubleLinked,
    class Closing = TuListPolicyNotCloseable, class Comparing = TuListPolicyComparable,
    class Serializing = TuListPolicySerializable>
class TuListSorted
    : public TuListBaseIntermediate<T, Flags, Size, Linking, Closing, Comparing, Serializing>
{
    using Base = TuListBaseIntermediate<T, Flags, Size, Linking, Closing, Comparing, Serializing>;

public:
    using typename Base::iterator;
    using typename Base::Node;
    using typename Base::PlexManager;

    TuListSorted()
        : TuListSorted(Less())
    {
    }
    explicit TuListSorted(Less less, unsigned int blockSize = PlexManager::kDefaultBlockSize)
        : Base(blockSize)
        , m_less(std::move(less))
    {
    }
    explicit TuListSorted(TuSmartPointer<PlexManager> plexManager, Less less = Less())
        : Base(std::move(plexManager))
        , m_less(std::move(less))
    {
    }
    TuListSorted(std::initializer_list<T> elements, Less less = Less());
    TuListSorted(const TuListSorted& other)
        : TuListSorted(other.m_less, other.GetBlockSize())
    {
        Base::appendCopies(other);
    }
    TuListSorted(TuListSorted&& other) noexcept = default;
    /// Keeps its own plex manager, and takes over the comparison.
    TuListSorted& operator=(const TuListSorted& other);
    TuListSorted& operator=(TuListSorted&& other) noexcept;
    ~TuListSorted() override = default;

    /// Inserts behind all that are not greater; returns the place of the new element.
    iterator Add(const T& element) { return addSorted(element); }
    iterator Add(T&& element) { return addSorted(std::move(element)); }

    /// Restores the order after elements have changed: a bubble sort that stops after a pass
    /// without a swap. Stable; iterators move with their elements.
    void Sort() { Base::bubbleSort(m_less); }

    using Base::Serialize;
    /// A record whose elements are not in order is read into order.
    void Serialize(TuStreamReadBinary& stream);

    void Swap(TuListSorted& other) noexcept
    {
        Base::swapNodes(other);
        std::swap(m_less, other.m_less);
    }
    friend void swap(TuListSorted& a, TuListSorted& b) noexcept { a.Swap(b); }

private:
    TuListSorted makeSibling(const Less& less) const
    {
        return Base::getPlexManager().IsNull() ? TuListSorted(less, Base::GetBlockSize())
                                               : TuListSorted(Base::getPlexManager(), less);
    }
    template <class Value> iterator addSorted(Value&& element);

    [[no_unique_address]] Less m_less;
};

template <class T, int F, class S, class Less, class L, class C, class P, class Z>
TuListSorted<T, F, S, Less, L, C, P, Z>::TuListSorted(std::initializer_list<T> elements, Less less)
    : TuListSorted(std::move(less))
{
    for (const T& element : elements) {
        Add(element);
    }
}

template <class T, int F, class S, class O, class L, class C, class P, class Z>
TuListSorted<T, F, S, O, L, C, P, Z>& TuListSorted<T, F, S, O, L, C, P, Z>::operator=(
    const TuListSorted& other)
{
    TuListSorted copy = makeSibling(other.m_less);
    copy.appendCopies(other);
    Swap(copy);
    return *this;
}

template <class T, int F, class S, class O, class L, class C, class P, class Z>
TuListSorted<T, F, S, O, L, C, P, Z>& TuListSorted<T, F, S, O, L, C, P, Z>::operator=(
    TuListSorted&& other) noexcept
{
    TuListSorted(std::move(other)).Swap(*this);
    return *this;
}

template <class T, int F, class S, class O, class L, class C, class P, class Z>
template <class Value>
typename TuListSorted<T, F, S, O, L, C, P, Z>::iterator
TuListSorted<T, F, S, O, L, C, P, Z>::addSorted(Value&& element)
{
    Node* next = nullptr;
    for (Node* node = Base::getTailNode(); node != nullptr && m_less(element, node->element);
         node = node->previous) {
        next = node;
    }
    return Base::iteratorTo(Base::insertBefore(next, std::forward<Value>(element)));
}

template <class T, int F, class S, class O, class L, class C, class P, class Z>
void TuListSorted<T, F, S, O, L, C, P, Z>::Serialize(TuStreamReadBinary& stream)
{
    TuListSorted read = makeSibling(m_less);
    // Sorted at once: one by one, a record in the wrong order would take the square of its length.
    TuArray<T> elements;
    Base::readElements(stream, [&elements](T&& element) { elements.Add(std::move(element)); });
    if (!std::is_sorted(elements.begin(), elements.end(), m_less)) {
        std::stable_sort(elements.begin(), elements.end(), m_less);
    }
    for (T& element : elements) {
        read.insertBefore(nullptr, std::move(element));
    }
    Base::swapNodes(read);
}
