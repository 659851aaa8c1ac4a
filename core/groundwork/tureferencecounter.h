#pragma once

#include "groundwork/groundworkapi.h"
#include "groundwork/tuassert.h"

#include <atomic>

class TuWeakEntry;
template <class Count> class TuReferenceCounter;

/// How many strong references an object has, and who refers to it weakly.
///
/// Most objects are never referred to weakly: they pay one null pointer here and take no lock. The
/// first weak link makes a small block with the lock and the list of weak entries; the entries keep
/// it alive, so that turning one into a strong reference never touches an object that is gone.
///
/// Ownership: a member of the object that it counts.
/// Threads:   all operations may run on any thread at once. AddReference needs a reference that the
///            caller holds already, or an object that no other thread knows yet.
template <> class GROUNDWORK_API TuReferenceCounter<unsigned int>
{
public:
    TuReferenceCounter() = default;
    ~TuReferenceCounter()
    {
        TU_ASSERT(GetCount() == 0,
            "an object was destroyed that smart pointers still refer to; was it deleted by hand, or"
            " does it live on the stack?");
        EndReferences();
    }
    TuReferenceCounter(const TuReferenceCounter&) = delete;
    TuReferenceCounter& operator=(const TuReferenceCounter&) = delete;

    void AddReference() const { m_count.fetch_add(1, std::memory_order_relaxed); }

    /// Returns true to the caller who gave the last reference back: he calls EndReferences and
    /// deletes the object.
    [[nodiscard]] bool ReleaseReference() const
    {
        // Release: what this owner wrote is visible to the last one. Acquire: the last one sees it.
        return m_count.fetch_sub(1, std::memory_order_acq_rel) == 1;
    }
    /// Clears the weak entries of an object that has no references any more. A separate step, so
    /// that the common release is two instructions.
    void EndReferences() const
    {
        if (m_weak.load(std::memory_order_acquire) != nullptr) {
            clearWeakEntries();
        }
    }

    /// Adds a reference unless there is none: a dying object stays dying.
    [[nodiscard]] bool AddReferenceUnlessZero() const
    {
        unsigned int count = m_count.load(std::memory_order_relaxed);
        while (count != 0) {
            if (m_count.compare_exchange_weak(count, count + 1, std::memory_order_relaxed)) {
                return true;
            }
        }
        return false;
    }

    /// Advisory: another thread may change it at once.
    unsigned int GetCount() const { return m_count.load(std::memory_order_relaxed); }

private:
    friend class TuWeakEntry;
    class WeakBlock;

    WeakBlock& getWeakBlock() const;
    void clearWeakEntries() const;

    mutable std::atomic<unsigned int> m_count{ 0 };
    mutable std::atomic<WeakBlock*> m_weak{ nullptr };
};

/// One weak reference, as an entry in its target's list; the base of TuWeakPointer.
///
/// Threads: Lock may run on several threads at once, and while the target is being released. Link
///          and Unlink change the entry itself: its owner keeps other threads away meanwhile.
class GROUNDWORK_API TuWeakEntry
{
public:
    TuWeakEntry() = default;
    ~TuWeakEntry() { Unlink(); }
    TuWeakEntry(const TuWeakEntry&) = delete;
    TuWeakEntry& operator=(const TuWeakEntry&) = delete;

    /// Enters the head of the list of `target`, which the caller keeps alive meanwhile.
    void Link(const TuReferenceCounter<unsigned int>& target);
    /// Links to the target of `other`, where that still lives.
    void LinkLike(const TuWeakEntry& other);
    void Unlink();
    /// Adds a strong reference to the target; false when there is no target, or it is dying.
    [[nodiscard]] bool Lock() const;

private:
    friend class TuReferenceCounter<unsigned int>;

    // The first three are guarded by the block's lock.
    const TuReferenceCounter<unsigned int>* m_target = nullptr;
    TuWeakEntry* m_previous = nullptr;
    TuWeakEntry* m_next = nullptr;
    TuReferenceCounter<unsigned int>::WeakBlock* m_block = nullptr;

    void enterList(const TuReferenceCounter<unsigned int>& target);
};
