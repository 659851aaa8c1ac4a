#pragma once

#include "groundwork/tumap.h"
#include "groundwork/tuset.h"
#include "tabase/tabaseapi.h"

#include <array>
#include <utility>

class TaDataHandleBase;

/// Which handles belong to which thread.
///
/// Most threads have one handle at a time: the first few such threads stand in place, and a set is
/// made only for what goes beyond. It would come and go with each lock, so the last one that became
/// empty stays until another does.
///
/// Threads: one at a time; the manager's lock guards it.
/// Failure: only Add throws, TuExceptionOutOfMemory; nothing has changed then.
class TABASE_API TaHandlesOfThreads
{
public:
    /// How many handles the thread has.
    unsigned int GetCount(unsigned int threadId) const;
    bool Has(unsigned int threadId) const
    {
        return findSingle(threadId) != nullptr || (!m_sets.IsEmpty() && GetCount(threadId) != 0);
    }
    /// Null for a thread without handles.
    TaDataHandleBase* GetFirst(unsigned int threadId) const;

    void Add(unsigned int threadId, TaDataHandleBase& handle);
    /// False where it is not there.
    bool Remove(unsigned int threadId, TaDataHandleBase& handle) noexcept;
    /// Puts `by` into the place of `handle`, where that is there. Needs no memory.
    void Replace(unsigned int threadId, TaDataHandleBase& handle, TaDataHandleBase& by) noexcept;
    void RemoveAll(unsigned int threadId) noexcept
    {
        if (SSingle* const single = findSingle(threadId)) {
            single->handle = nullptr;
        } else if (!m_sets.IsEmpty()) {
            removeSet(threadId);
        }
    }

    /// Calls `use(handle)` for the handles of the thread, up to the first for which it is false;
    /// whether it was true for all.
    template <class Use> bool ForEachOf(unsigned int threadId, Use&& use) const;
    /// Calls `use(threadId, handle)` for all handles, in the same way.
    template <class Use> bool ForEach(Use&& use) const;

private:
    /// With buckets for threads that ask for many nodes at once.
    class Handles : public TuSet<TaDataHandleBase*>
    {
    public:
        Handles()
            : TuSet(kBlockSize, kBucketCount)
        {
        }
    };
    static constexpr unsigned int kBlockSize = 10;
    static constexpr unsigned int kBucketCount = 1021;
    /// A thread that has one handle; no handle: the place is free.
    struct SSingle
    {
        unsigned int threadId = 0;
        TaDataHandleBase* handle = nullptr;
    };

    /// Of a thread with one handle, which is then not in the map.
    const SSingle* findSingle(unsigned int threadId) const
    {
        for (const SSingle& single : m_singles) {
            if (single.threadId == threadId && single.handle != nullptr) {
                return &single;
            }
        }
        return nullptr;
    }
    SSingle* findSingle(unsigned int threadId)
    {
        return const_cast<SSingle*>(std::as_const(*this).findSingle(threadId));
    }
    void removeSet(unsigned int threadId) noexcept;
    void addToSet(unsigned int threadId, TaDataHandleBase& handle);
    void noteEmpty(unsigned int threadId) noexcept;

    std::array<SSingle, 4> m_singles;
    TuMap<unsigned int, Handles> m_sets; // keyed by the system's number of the thread
    unsigned int m_emptied = 0; // the thread whose set was the last to become empty
};

template <class Use> bool TaHandlesOfThreads::ForEachOf(unsigned int threadId, Use&& use) const
{
    if (const SSingle* const single = findSingle(threadId)) {
        return use(*single->handle);
    }
    if (const Handles* const handles = m_sets.Lookup(threadId)) {
        for (TaDataHandleBase* const handle : *handles) {
            if (!use(*handle)) {
                return false;
            }
        }
    }
    return true;
}

template <class Use> bool TaHandlesOfThreads::ForEach(Use&& use) const
{
    for (const SSingle& single : m_singles) {
        if (single.handle != nullptr && !use(single.threadId, *single.handle)) {
            return false;
        }
    }
    for (const auto& [threadId, handles] : m_sets) {
        for (TaDataHandleBase* const handle : handles) {
            if (!use(threadId, *handle)) {
                return false;
            }
        }
    }
    return true;
}
