#include "platform/platformlock.h"

#include <pthread.h>

#include <new>

namespace platform {
namespace {

    pthread_mutex_t* asMutex(unsigned char* native)
    {
        return std::launder(reinterpret_cast<pthread_mutex_t*>(native));
    }

} // namespace

CriticalSection::CriticalSection() noexcept
{
    static_assert(sizeof(pthread_mutex_t) <= kNativeSize);
    static_assert(alignof(pthread_mutex_t) <= alignof(std::max_align_t));

    // A private recursive mutex takes no resource, so none of these calls can fail.
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(::new (static_cast<void*>(m_native)) pthread_mutex_t, &attributes);
    pthread_mutexattr_destroy(&attributes);
}

CriticalSection::~CriticalSection() { pthread_mutex_destroy(asMutex(m_native)); }

void CriticalSection::Enter() noexcept TU_NO_THREAD_SAFETY_ANALYSIS
{
    pthread_mutex_lock(asMutex(m_native));
}

void CriticalSection::Leave() noexcept TU_NO_THREAD_SAFETY_ANALYSIS
{
    pthread_mutex_unlock(asMutex(m_native));
}

} // namespace platform
