#include "platform/platformlock.h"

#include "platform/win32/platformwindows.h"

#include <new>

namespace platform {
namespace {

    CRITICAL_SECTION* asSection(unsigned char* native)
    {
        return std::launder(reinterpret_cast<CRITICAL_SECTION*>(native));
    }

} // namespace

CriticalSection::CriticalSection() noexcept
{
    static_assert(sizeof(CRITICAL_SECTION) <= sizeof(m_native));
    static_assert(alignof(CRITICAL_SECTION) <= alignof(void*));

    ::InitializeCriticalSection(::new (static_cast<void*>(m_native)) CRITICAL_SECTION);
}

CriticalSection::~CriticalSection() { ::DeleteCriticalSection(asSection(m_native)); }

void CriticalSection::Enter() noexcept TU_NO_THREAD_SAFETY_ANALYSIS
{
    ::EnterCriticalSection(asSection(m_native));
}

void CriticalSection::EnterInAnyOrder() noexcept TU_NO_THREAD_SAFETY_ANALYSIS { Enter(); }

void CriticalSection::Leave() noexcept TU_NO_THREAD_SAFETY_ANALYSIS
{
    ::LeaveCriticalSection(asSection(m_native));
}

} // namespace platform
