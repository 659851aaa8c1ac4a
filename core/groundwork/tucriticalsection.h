#pragma once

#include "groundwork/groundworkapi.h"
#include "platform/platformlock.h"

/// A recursive lock: the thread that holds it may enter again, and must leave as often.
///
/// Threads: any thread may enter; only the holder may leave.
class GROUNDWORK_API TU_CAPABILITY("mutex") TuCriticalSection
{
public:
    TuCriticalSection() = default;
    TuCriticalSection(const TuCriticalSection&) = delete;
    TuCriticalSection& operator=(const TuCriticalSection&) = delete;

    void Enter() noexcept TU_ACQUIRE() TU_NO_THREAD_SAFETY_ANALYSIS { m_lock.Enter(); }
    /// For locks whose order follows from data: see platform::CriticalSection.
    void EnterInAnyOrder() noexcept TU_ACQUIRE() TU_NO_THREAD_SAFETY_ANALYSIS
    {
        m_lock.EnterInAnyOrder();
    }
    void Leave() noexcept TU_RELEASE() TU_NO_THREAD_SAFETY_ANALYSIS { m_lock.Leave(); }

private:
    platform::CriticalSection m_lock;
};

/// Holds a critical section for as long as it lives.
class TU_SCOPED_CAPABILITY TuCriticalSectionAuto
{
public:
    explicit TuCriticalSectionAuto(TuCriticalSection& lock) noexcept TU_ACQUIRE(lock)
        : m_lock(lock)
    {
        m_lock.Enter();
    }
    ~TuCriticalSectionAuto() TU_RELEASE() { m_lock.Leave(); }
    TuCriticalSectionAuto(const TuCriticalSectionAuto&) = delete;
    TuCriticalSectionAuto& operator=(const TuCriticalSectionAuto&) = delete;

private:
    TuCriticalSection& m_lock;
};

/// The same for a lock whose order among others follows from data.
class TU_SCOPED_CAPABILITY TuCriticalSectionAutoInAnyOrder
{
public:
    explicit TuCriticalSectionAutoInAnyOrder(TuCriticalSection& lock) noexcept TU_ACQUIRE(lock)
        : m_lock(lock)
    {
        m_lock.EnterInAnyOrder();
    }
    ~TuCriticalSectionAutoInAnyOrder() TU_RELEASE() { m_lock.Leave(); }
    TuCriticalSectionAutoInAnyOrder(const TuCriticalSectionAutoInAnyOrder&) = delete;
    TuCriticalSectionAutoInAnyOrder& operator=(const TuCriticalSectionAutoInAnyOrder&) = delete;

private:
    TuCriticalSection& m_lock;
};

/// The one lock under which singletons of all libraries are made. It is there before the first
/// static object of a program, and stays until the process is gone.
[[nodiscard]] GROUNDWORK_API TuCriticalSection& GetCriticalSectionSingleton();
