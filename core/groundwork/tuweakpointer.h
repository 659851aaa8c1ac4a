#pragma once

#include "groundwork/tusmartpointer.h"

/// Refers to a shared object without keeping it alive: a child's link to its parent, say.
///
/// Ownership: none. When the last strong reference goes, or the target is destroyed, the link is
///            cleared.
/// Threads:   Lock may run on several threads, and against the release of the target. Set, Clear
///            and destruction change the link itself: keep other users of it away meanwhile.
/// Failure:   the first link to a target takes memory and may throw std::bad_alloc.
template <class T> class GROUNDWORK_TEMPLATE TuWeakPointer
{
public:
    TuWeakPointer() = default;
    explicit TuWeakPointer(T* target) { Set(target); }
    TuWeakPointer(const TuWeakPointer& other)
        : m_target(other.m_target)
    {
        m_entry.LinkLike(other.m_entry);
    }
    TuWeakPointer& operator=(const TuWeakPointer& other)
    {
        if (this != &other) {
            m_entry.LinkLike(other.m_entry);
            m_target = other.m_target;
        }
        return *this;
    }

    /// Links to `target`, which the caller keeps alive meanwhile; null clears.
    void Set(T* target)
    {
        if (target == nullptr) {
            m_entry.Unlink();
        } else {
            m_entry.Link(target->getReferenceCounter());
        }
        m_target = target;
    }
    void Clear() { Set(nullptr); }

    /// Where the link was set to. Only for a caller who knows by himself that the target lives.
    T* GetUnguarded() const { return m_target; }
    /// A strong reference to the target; null when there is none, or its last one has gone.
    [[nodiscard]] TuSmartPointer<T> Lock() const
    {
        return m_entry.Lock() ? TuSmartPointer<T>::Adopt(m_target) : TuSmartPointer<T>();
    }

private:
    TuWeakEntry m_entry;
    T* m_target = nullptr; // meaningful only while m_entry locks
};
