#pragma once

#include "groundwork/tucriticalsection.h"

/// Holds the lock of all singletons while one is made. Constructors make other singletons, so
/// guards are nested; what is to be done when an object is ready is done when the outermost one has
/// left the lock.
class GROUNDWORK_API TU_SCOPED_CAPABILITY TuSingletonGuard
{
public:
    using Hook = void (*)(void* instance); // throws nothing

    TuSingletonGuard() noexcept TU_ACQUIRE(GetCriticalSectionSingleton());
    /// Leaves the lock, and calls the hooks that wait for that.
    ~TuSingletonGuard() TU_RELEASE();
    TuSingletonGuard(const TuSingletonGuard&) = delete;
    TuSingletonGuard& operator=(const TuSingletonGuard&) = delete;

    /// Makes room for one hook, which CallLater then takes without a failure.
    void Reserve();
    void CallLater(Hook hook, void* instance) noexcept;
};
