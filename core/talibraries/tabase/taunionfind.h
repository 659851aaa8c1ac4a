#pragma once

#include "groundwork/tuarray.h"
#include "groundwork/tuassert.h"
#include "tabase/tabaseapi.h"

#include <cstdint>

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
///          2^32 of them or more. Elements are not checked against the count, except by the
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
inline void TaUnionFind::AddPair(unsigned long a, unsigned long b)
{
    assertForest();
    auto lower = static_cast<std::uint32_t>(a);
    auto upper = static_cast<std::uint32_t>(b);
    std::uint32_t lowerParent = m_entries[lower];
    std::uint32_t upperParent = m_entries[upper];
    // Both paths are walked at once, always on from the element with the greater parent, which is
    // linked to the smaller parent on the way. The walks meet, or the one that arrives at its root
    // hangs it below the other. Each step makes a path shorter, none joins what the pair does not,
    // and since links only ever lead to smaller elements, the root is the smallest of the set: the
    // sets and roots are those of two walks to the roots and a collapse of both paths.
    while (lowerParent != upperParent) {
        if (lowerParent > upperParent) {
            std::swap(lower, upper);
            std::swap(lowerParent, upperParent);
        }
        m_entries[upper] = lowerParent;
        if (upper == upperParent) {
            return;
        }
        upper = upperParent;
        upperParent = m_entries[upper];
    }
}
