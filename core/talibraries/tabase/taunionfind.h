#pragma once

#include "groundwork/tuarray.h"
#include "groundwork/tuassert.h"
#include "tabase/tabaseapi.h"

#include <cstdint>
#include <utility>

/// Partitions the elements 0 .. n-1 into disjoint sets: AddPair merges, and CreateSetNumbers
/// numbers the sets that remain.
///
/// The smallest element of a set is always its root. So neither the sets nor their numbers depend
/// on the order of the pairs: sets are numbered in the order of their smallest elements.
///
///     TaUnionFind sets(vertexCount);
///     for (const Edge& edge : edges)
///         sets.AddPair(edge.from, edge.to);
///     const unsigned long count = sets.CreateSetNumbers();
///
/// After CreateSetNumbers only GetSetNumber and GetCount may be used, until InitElements.
///
/// Threads: as a standard container: many readers, or one writer.
/// Failure: TuExceptionOutOfMemory when elements are made, TuExceptionPreconditionViolation for
///          more than 2^32 - 2 of them. Elements are not checked against the count, except by the
///          assertions of a debug build.
class TABASE_API TaUnionFind
{
public:
    TaUnionFind() = default;
    /// Each element is a set of its own.
    explicit TaUnionFind(unsigned long count);
    virtual ~TaUnionFind() = default;
    TaUnionFind(const TaUnionFind&) = default;
    TaUnionFind& operator=(const TaUnionFind&) = default;
    TaUnionFind(TaUnionFind&&) = default;
    TaUnionFind& operator=(TaUnionFind&&) = default;

    /// Starts anew.
    void InitElements(unsigned long count);

    /// The smallest element of the set. Changes nothing.
    unsigned long GetRoot(unsigned long element) const;
    /// Merges the sets of `a` and `b`.
    void AddPair(unsigned long a, unsigned long b);
    /// Numbers the sets from 0 and returns how many there are.
    unsigned long CreateSetNumbers();
    /// Before CreateSetNumbers, some element of the set that is not greater.
    unsigned long GetSetNumber(unsigned long element) const
    {
        return m_entries[static_cast<unsigned int>(element)];
    }
    unsigned long GetCount() const { return m_entries.GetSize(); }

protected:
    /// Makes each element on the path from `element` to its current root, that root included, point
    /// to `root`, which must not be greater than any of them.
    void collapsePath(unsigned long element, unsigned long root);

private:
    void assertForest() const
    {
        TU_ASSERT(!m_numbered,
            "the sets are numbered, and so no longer known; call InitElements to start anew");
    }

    /// The parent of each element, its own for a root, and never a greater one. After numbering,
    /// the set numbers.
    TuArray<std::uint32_t> m_entries;
    bool m_numbered = false;
};

// Here, so that the walks of successive pairs overlap: most of the time is waiting for memory.
//
// Both paths are walked at once, on from the element with the greater parent, and halved on the
// way: an element that is passed points to its grandparent, the next one to go to. The walks end
// where they meet, or where the greater parent is a root: it then hangs below the other parent,
// which need not be a root. Links lead to smaller elements only, so the root of a set is its
// smallest element. Sets and roots are therefore those of two walks to the roots and a collapse of
// both paths to the smaller one, for fewer steps and far fewer writes.
inline void TaUnionFind::AddPair(unsigned long a, unsigned long b)
{
    assertForest();
    auto upper = static_cast<std::uint32_t>(a);
    auto lower = static_cast<std::uint32_t>(b);
    std::uint32_t upperParent = m_entries[upper];
    std::uint32_t lowerParent = m_entries[lower];
    while (upperParent != lowerParent) {
        if (upperParent < lowerParent) {
            std::swap(upper, lower);
            std::swap(upperParent, lowerParent);
        }
        const std::uint32_t grandparent = m_entries[upperParent];
        if (grandparent == upperParent) {
            m_entries[upperParent] = lowerParent;
            m_entries[upper] = lowerParent;
            return;
        }
        m_entries[upper] = grandparent;
        upper = grandparent;
        upperParent = m_entries[upper];
    }
}
