#include "platform/threadvalue.h"

#include "platform/win32/platformwindows.h"

namespace platform {
namespace {

    DWORD keyOf(std::uintptr_t key) { return static_cast<DWORD>(key); }

} // namespace

// The fiber's storage, because the thread's does not tell when the thread ends.
ThreadValue::ThreadValue(EndFunction end) noexcept
    : m_key(::FlsAlloc(end))
    , m_isUsable(keyOf(m_key) != FLS_OUT_OF_INDEXES)
{
}

void* ThreadValue::Get() const noexcept
{
    return m_isUsable ? ::FlsGetValue(keyOf(m_key)) : nullptr;
}

bool ThreadValue::Set(void* value) const noexcept
{
    return m_isUsable && ::FlsSetValue(keyOf(m_key), value) != FALSE;
}

} // namespace platform
