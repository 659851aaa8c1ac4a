#pragma once

#include "groundwork/tuassert.h"
#include "groundwork/tuelementstream.h"
#include "groundwork/tunodelinked.h"

/// What the lists leave open, each a template argument that can be replaced.

/// The linking: each node knows both neighbours, so that any node is removed at once.
struct TuListPolicyDoubleLinked
{
    template <class T> using Node = TuNodeLinked<T>;

    /// Links `node` in between two neighbours; null is the end of the list on that side.
    template <class N> static void Link(N* node, N* previous, N* next, N*& head, N*& tail)
    {
        node->previous = previous;
        node->next = next;
        (previous != nullptr ? previous->next : head) = node;
        (next != nullptr ? next->previous : tail) = node;
    }
    template <class N> static void Unlink(N* node, N*& head, N*& tail)
    {
        (node->previous != nullptr ? node->previous->next : head) = node->next;
        (node->next != nullptr ? node->next->previous : tail) = node->previous;
    }
    /// Makes two lists one: `head` of the one comes behind `tail` of the other.
    template <class N> static void Join(N* tail, N* head)
    {
        tail->next = head;
        head->previous = tail;
    }
};

/// The ends: a list is a line with two ends, never closed to a ring. It demands that nothing comes
/// before the head and behind the tail, which is what ends every walk.
struct TuListPolicyNotCloseable
{
    template <class N>
    static void CheckEnds([[maybe_unused]] const N* head, [[maybe_unused]] const N* tail)
    {
        TU_ASSERT((head == nullptr) == (tail == nullptr), "a list has lost one of its ends");
        TU_ASSERT(head == nullptr || (head->previous == nullptr && tail->next == nullptr),
            "a list has been closed to a ring; were its nodes linked by hand?");
    }
};

/// The comparison of elements with each other and with what is looked for: their own operator==.
struct TuListPolicyComparable
{
    template <class T, class Value> static bool AreEqual(const T& element, const Value& value)
    {
        return element == value;
    }
};

/// The stored form of an element; the version is that of the list's record.
using TuListPolicySerializable = TuElementPolicySerializable;
