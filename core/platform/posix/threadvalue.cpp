#include "platform/threadvalue.h"

#include <pthread.h>

namespace platform {
namespace {

    pthread_key_t keyOf(std::uintptr_t key) { return static_cast<pthread_key_t>(key); }

} // namespace

ThreadValue::ThreadValue(EndFunction end) noexcept
{
    pthread_key_t key{};
    m_isUsable = pthread_key_create(&key, end) == 0;
    m_key = key;
}

void* ThreadValue::Get() const noexcept
{
    return m_isUsable ? pthread_getspecific(keyOf(m_key)) : nullptr;
}

bool ThreadValue::Set(void* value) const noexcept
{
    return m_isUsable && pthread_setspecific(keyOf(m_key), value) == 0;
}

} // namespace platform
