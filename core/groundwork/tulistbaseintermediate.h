#pragma once

#include "groundwork/tulistbase.h"

#include <array>
#include <cstddef>
#include <limits>
#include <utility>

/// What lists do with the values of their elements: look them up, compare, sort, store. The
/// policies say how. Use TuList or TuListSorted, which document the whole.
template <class T, int Flags, class Size, class Linking, class Closing, class Comparing,
    class Serializing>
class TuListBaseIntermediate : public TuListBase<T, Flags, Size, Linking, Closing>
{
    using Base = TuListBase<T, Flags, Size, Linking, Closing>;

public:
    using typename Base::const_iterator;
    using typename Base::iterator;
    using typename Base::Node;

    /// The first equal element, or the end.
    template <class Value> iterator Find(const Value& value)
    {
        return Base::iteratorTo(findNode(value));
    }
    template <class Value> const_iterator Find(const Value& value) const
    {
        return Base::iteratorTo(findNode(value));
    }
    template <class Value> bool Contains(const Value& value) const
    {
        return findNode(value) != nullptr;
    }
    /// Removes the first equal element; false when there is none.
    template <class Value> bool Remove(const Value& value);

    /// Version 0, the number of elements in 32 bits, the elements in their order.
    void Serialize(TuStreamWriteBinary& stream) const;

    friend bool operator==(const TuListBaseIntermediate& a, const TuListBaseIntermediate& b)
    {
        return a.GetCount() == b.GetCount() && a.hasEqualElements(b);
    }

protected:
    using Base::Base;

    template <class Value> Node* findNode(const Value& value) const;
    bool hasEqualElements(const TuListBaseIntermediate& other) const;
    /// Copies the elements of another list to the end.
    void appendCopies(const Base& other);
    /// Reads a record and hands each element to `add`.
    template <class Add> static void readElements(TuStreamReadBinary& stream, Add&& add);
    /// Swaps neighbours that are in the wrong order until a pass finds none. Elements stay in their
    /// nodes: iterators move with them. Equal elements keep their order.
    template <class Less> void bubbleSort(Less& less);
    /// Sorts the nodes from `first` on into those before, which are in order: what inserting them
    /// one by one would give, in n log n steps, without memory. Elements stay in their nodes.
    template <class Less> void mergeSort(Node* first, Less& less);

private:
    // Chains of nodes, linked by `next`.
    template <class Less> static Node* sortChain(Node* chain, Less& less);
    template <class Less> static Node* mergeChains(Node* first, Node* second, Less& less);
};

template <class T, int F, class S, class L, class C, class P, class Z>
template <class Value>
typename TuListBaseIntermediate<T, F, S, L, C, P, Z>::Node*
TuListBaseIntermediate<T, F, S, L, C, P, Z>::findNode(const Value& value) const
{
    Node* node = Base::getHeadNode();
    while (node != nullptr && !P::AreEqual(node->element, value)) {
        node = node->next;
    }
    return node;
}

template <class T, int F, class S, class L, class C, class P, class Z>
template <class Value>
bool TuListBaseIntermediate<T, F, S, L, C, P, Z>::Remove(const Value& value)
{
    Node* const node = findNode(value);
    if (node != nullptr) {
        Base::removeNode(node);
    }
    return node != nullptr;
}

template <class T, int F, class S, class L, class C, class P, class Z>
bool TuListBaseIntermediate<T, F, S, L, C, P, Z>::hasEqualElements(
    const TuListBaseIntermediate& other) const
{
    const Node* ours = Base::getHeadNode();
    const Node* theirs = other.getHeadNode();
    while (ours != nullptr && P::AreEqual(ours->element, theirs->element)) {
        ours = ours->next;
        theirs = theirs->next;
    }
    return ours == nullptr;
}

template <class T, int F, class S, class L, class C, class P, class Z>
void TuListBaseIntermediate<T, F, S, L, C, P, Z>::appendCopies(const Base& other)
{
    const auto& source = static_cast<const TuListBaseIntermediate&>(other);
    for (const Node* node = source.getHeadNode(); node != nullptr; node = node->next) {
        Base::insertBefore(nullptr, node->element);
    }
}

template <class T, int F, class S, class L, class C, class P, class Z>
void TuListBaseIntermediate<T, F, S, L, C, P, Z>::Serialize(TuStreamWriteBinary& stream) const
{
    stream.WriteVersion(Z::kVersion);
    stream << static_cast<unsigned int>(Base::GetCount());
    for (const Node* node = Base::getHeadNode(); node != nullptr; node = node->next) {
        Z::Write(stream, node->element);
    }
}

template <class T, int F, class S, class L, class C, class P, class Z>
template <class Add>
void TuListBaseIntermediate<T, F, S, L, C, P, Z>::readElements(
    TuStreamReadBinary& stream, Add&& add)
{
    stream.ReadAndCompareVersion(Z::kVersion);
    unsigned int count = 0;
    stream >> count;
    for (; count != 0; --count) {
        T element{};
        Z::Read(stream, element);
        add(std::move(element));
    }
}

template <class T, int F, class S, class L, class C, class P, class Z>
template <class Less>
void TuListBaseIntermediate<T, F, S, L, C, P, Z>::bubbleSort(Less& less)
{
    bool hasSwapped = Base::getHeadNode() != nullptr;
    const Node* sorted = nullptr; // from here on all are in place
    while (hasSwapped) {
        hasSwapped = false;
        Node* node = Base::getHeadNode();
        while (node->next != sorted) {
            if (less(node->next->element, node->element)) {
                Base::moveForward(node->next);
                hasSwapped = true;
            } else {
                node = node->next;
            }
        }
        sorted = node;
    }
}

template <class T, int F, class S, class L, class C, class P, class Z>
template <class Less>
void TuListBaseIntermediate<T, F, S, L, C, P, Z>::mergeSort(Node* first, Less& less)
{
    Node* sorted = nullptr;
    if (first->previous != nullptr) {
        first->previous->next = nullptr;
        sorted = Base::getHeadNode();
    }
    Base::relink(mergeChains(sorted, sortChain(first, less), less));
}

template <class T, int F, class S, class L, class C, class P, class Z>
template <class Less>
typename TuListBaseIntermediate<T, F, S, L, C, P, Z>::Node*
TuListBaseIntermediate<T, F, S, L, C, P, Z>::sortChain(Node* chain, Less& less)
{
    // Sorted chains of 1, 2, 4, ... nodes, or null, the earlier nodes in the longer ones.
    std::array<Node*, std::numeric_limits<S>::digits + 1> chains{};
    while (chain != nullptr) {
        Node* carried = std::exchange(chain, chain->next);
        carried->next = nullptr;
        std::size_t i = 0;
        for (; chains[i] != nullptr; ++i) {
            carried = mergeChains(std::exchange(chains[i], nullptr), carried, less);
        }
        chains[i] = carried;
    }
    Node* sorted = nullptr;
    for (Node* shorter : chains) {
        sorted = mergeChains(shorter, sorted, less);
    }
    return sorted;
}

/// Of equal elements those of `first` come first.
template <class T, int F, class S, class L, class C, class P, class Z>
template <class Less>
typename TuListBaseIntermediate<T, F, S, L, C, P, Z>::Node*
TuListBaseIntermediate<T, F, S, L, C, P, Z>::mergeChains(Node* first, Node* second, Less& less)
{
    Node* merged = nullptr;
    Node** end = &merged;
    while (first != nullptr && second != nullptr) {
        Node*& next = less(second->element, first->element) ? second : first;
        *end = next;
        end = &next->next;
        next = next->next;
    }
    *end = first != nullptr ? first : second;
    return merged;
}
