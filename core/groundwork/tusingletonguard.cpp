#include "groundwork/tusingletonguard.h"

#include <utility>
#include <vector>

namespace {

struct SWaitingHook
{
    TuSingletonGuard::Hook hook;
    void* instance;
};

/// Guarded by the lock of all singletons, and never destroyed, as that.
struct SWaitingHooks
{
    unsigned int depth = 0; // of guards
    unsigned int reserved = 0;
    std::vector<SWaitingHook> hooks;
};

SWaitingHooks& waitingHooks()
{
    static SWaitingHooks& s_hooks = *new SWaitingHooks;
    return s_hooks;
}

} // namespace

TuSingletonGuard::TuSingletonGuard() noexcept TU_NO_THREAD_SAFETY_ANALYSIS
{
    GetCriticalSectionSingleton().Enter();
    ++waitingHooks().depth;
}

TuSingletonGuard::~TuSingletonGuard() TU_NO_THREAD_SAFETY_ANALYSIS
{
    SWaitingHooks& waiting = waitingHooks();
    std::vector<SWaitingHook> hooks;
    if (--waiting.depth == 0) {
        hooks.swap(waiting.hooks);
        waiting.reserved = 0;
    }
    GetCriticalSectionSingleton().Leave();
    for (const auto& [hook, instance] : hooks) {
        hook(instance);
    }
}

void TuSingletonGuard::Reserve()
{
    SWaitingHooks& waiting = waitingHooks();
    ++waiting.reserved;
    waiting.hooks.reserve(waiting.reserved);
}

void TuSingletonGuard::CallLater(Hook hook, void* instance) noexcept
{
    waitingHooks().hooks.push_back({ hook, instance });
}
