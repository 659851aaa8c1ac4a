#pragma once

#include "groundwork/tumap.h"
#include "tabase/tabaseapi.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

/// The locks that one thread holds on a node.
struct SReadWriteCount
{
    std::uint32_t read = 0;
    std::uint32_t write = 0;

    bool IsZero() const { return (read | write) == 0; }
};

/// Which thread holds how many locks on a node.
///
/// Nearly always that is one thread, or two: these stand in place, and only more threads make a
/// map. So locking a tree of a million nodes takes no memory.
///
/// Threads: one at a time; the node's count lock guards it.
/// Failure: only Add throws, TuExceptionOutOfMemory; nothing has changed then.
class TABASE_API TaThreadCounts
{
public:
    /// Keyed by the number by which the system knows the thread.
    using Map = TuMap<unsigned int, SReadWriteCount>;

    static constexpr unsigned int kBlockSize = 10;
    static constexpr unsigned int kBucketCount = 17;

    /// Zeros for a thread that holds nothing.
    SReadWriteCount Get(unsigned int threadId) const
    {
        const SReadWriteCount* count = find(threadId);
        return count != nullptr ? *count : SReadWriteCount();
    }
    /// Some thread that holds something; nothing where nobody does.
    std::optional<unsigned int> GetAnyThread() const;

    /// Changes what the thread holds by the two numbers, which take away no more than is there. A
    /// thread that holds nothing any more has no entry.
    void Add(unsigned int threadId, std::int64_t read, std::int64_t write);

    /// Calls `use(threadId, count)` for each thread that holds something.
    template <class Use> void ForEach(Use&& use) const;

private:
    struct SThread
    {
        unsigned int id = 0;
        SReadWriteCount count; // zero: the place is free
    };

    const SReadWriteCount* find(unsigned int threadId) const
    {
        for (const SThread& thread : m_first) {
            if (thread.id == threadId && !thread.count.IsZero()) {
                return &thread.count;
            }
        }
        return m_others != nullptr ? m_others->Lookup(threadId) : nullptr;
    }
    SReadWriteCount& findOrMake(unsigned int threadId);
    SReadWriteCount& findOrMakeInMap(unsigned int threadId);
    void removeFromMap(unsigned int threadId);

    std::array<SThread, 2> m_first;
    std::unique_ptr<Map> m_others; // none where the places above suffice
};

// The next two are called for each node of a tree that is locked.

inline SReadWriteCount& TaThreadCounts::findOrMake(unsigned int threadId)
{
    SThread& first = m_first[0];
    if (m_others == nullptr && m_first[1].count.IsZero()
        && (first.id == threadId || first.count.IsZero())) {
        first.id = threadId;
        return first.count;
    }
    return findOrMakeInMap(threadId);
}

inline void TaThreadCounts::Add(unsigned int threadId, std::int64_t read, std::int64_t write)
{
    SReadWriteCount& count = findOrMake(threadId);
    count.read = static_cast<std::uint32_t>(count.read + read);
    count.write = static_cast<std::uint32_t>(count.write + write);
    if (m_others != nullptr && count.IsZero()) {
        removeFromMap(threadId);
    }
}

template <class Use> void TaThreadCounts::ForEach(Use&& use) const
{
    for (const SThread& thread : m_first) {
        if (!thread.count.IsZero()) {
            use(thread.id, thread.count);
        }
    }
    if (m_others != nullptr) {
        for (const auto& [threadId, count] : *m_others) {
            use(threadId, count);
        }
    }
}
