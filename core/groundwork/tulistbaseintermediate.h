#pragma once

#include "groundwork/tulistbase.h"

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
