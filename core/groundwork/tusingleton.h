#pragma once

#include "groundwork/groundworkapi.h"
#include "groundwork/tucriticalsection.h"
#include "groundwork/tusingletonguard.h"

#include <atomic>
#include <cstdlib>

/// The base of a class that has one object in the process, made when it is first asked for.
///
///     class Registry;
///     TU_DECLARE_SINGLETON(MYLIBRARY_API, Registry)
///     class MYLIBRARY_API Registry : public TuSingleton<Registry>
///     {
///         friend class TuSingleton<Registry>;
///         Registry();
///     };
///     // and in one source of that library: TU_DEFINE_SINGLETON(Registry)
///
/// The two macros let all libraries see the same object; a class that one program keeps to itself
/// needs neither.
///
/// The constructor runs under the process-wide lock of all singletons. One that started a thread
/// and waited for it there would wait for ever as soon as that thread asks for any singleton. Such
/// a class declares the hook `void onInstanceCreated() noexcept`: it is called once, on the thread
/// that made the object, when the object can be had by everybody and the lock is left. (Where the
/// object was made by the constructor of another singleton: when that one is there, too.) Other
/// threads may use the object before the hook has run. The thread that it starts works on its own
/// object (`this`). Whoever enters the lock himself does not ask for singletons inside.
///
/// Objects are deleted when the process exits, those asked for first last; on Windows, those of a
/// library go after all of the program's. A class that others need while they are deleted (a log,
/// say) declares `static constexpr bool kLivesToTheEnd = true` and is never deleted. In a
/// destructor ask HasInstance first: GetInstance would make a new object of what is gone, which
/// nobody deletes.
///
/// Ownership: the process owns the object. A class that runs threads ends them in its destructor:
///            on Linux they still run then, on Windows, in a library's objects, they are gone.
/// Threads:   any thread may ask.
/// Failure:   what the constructor throws reaches the caller; the next one tries again.
template <class T> class GROUNDWORK_TEMPLATE TuSingleton
{
public:
    static T& GetInstance();
    static bool HasInstance();

    TuSingleton(const TuSingleton&) = delete;
    TuSingleton& operator=(const TuSingleton&) = delete;

protected:
    TuSingleton() = default;
    virtual ~TuSingleton() = default;

private:
    static T& makeInstance();
    static void deleteInstance();

    static inline std::atomic<T*> s_pInstance{ nullptr };
    static inline bool s_isCleanUpRegistered = false; // guarded by the process-wide lock
};

template <class T> T& TuSingleton<T>::GetInstance()
{
    T* instance = s_pInstance.load(std::memory_order_acquire);
    return instance != nullptr ? *instance : makeInstance();
}

template <class T> bool TuSingleton<T>::HasInstance()
{
    const TuCriticalSectionAuto guard(GetCriticalSectionSingleton());
    return s_pInstance.load(std::memory_order_acquire) != nullptr;
}

template <class T> T& TuSingleton<T>::makeInstance()
{
    TuSingletonGuard guard;
    if constexpr (!requires { requires T::kLivesToTheEnd; }) {
        if (!s_isCleanUpRegistered) {
            s_isCleanUpRegistered = std::atexit(deleteInstance) == 0;
        }
    }
    T* instance = s_pInstance.load(std::memory_order_relaxed);
    if (instance == nullptr) { // else another thread was faster
        guard.Reserve();
        instance = new T;
        s_pInstance.store(instance, std::memory_order_release);
        if constexpr (requires { instance->onInstanceCreated(); }) {
            static_assert(noexcept(instance->onInstanceCreated()), "nobody could catch it");
            guard.CallLater(
                [](void* object) { static_cast<T*>(object)->onInstanceCreated(); }, instance);
        }
    }
    return *instance;
}

template <class T> void TuSingleton<T>::deleteInstance()
{
    // The pointer stays while the destructor runs: it may still ask for its own object.
    delete s_pInstance.load(std::memory_order_acquire);
    s_pInstance.store(nullptr, std::memory_order_release);
}

/// Declare, before the class, and define the singleton `Class` of a library that exports it by
/// `API`.
#define TU_DECLARE_SINGLETON(API, Class) extern template class API TuSingleton<Class>;
#define TU_DEFINE_SINGLETON(Class) template class TuSingleton<Class>;
