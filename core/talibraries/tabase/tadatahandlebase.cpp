#include "tabase/tadatahandlebase.h"

#include "groundwork/tuassert.h"
#include "platform/platformthread.h"
#include "tabase/tadatamanager.h"

TaDataHandleBase::TaDataHandleBase(TaDataManager& manager)
    : m_manager(&manager)
    , m_threadId(platform::GetCurrentThreadId())
{
}

TaDataHandleBase::~TaDataHandleBase()
{
    TU_ASSERT(!m_isListed,
        "a handle goes that its manager still knows: the destructor of each class of handles calls"
        " leaveManager");
}

void TaDataHandleBase::requestLock()
{
    if (m_manager != nullptr) {
        m_manager->requestLock(*this);
    }
}

void TaDataHandleBase::releaseLock() noexcept
{
    if (m_isListed) {
        m_manager->unlockHandle(*this);
    }
}

void TaDataHandleBase::leaveManager() noexcept
{
    if (m_isListed) {
        m_manager->forgetHandle(*this);
    }
}

void TaDataHandleBase::takeOver(TaDataHandleBase& other) noexcept
{
    m_manager = nullptr;
    m_threadId = other.m_threadId;
    m_used = other.m_used;
    if (other.m_isListed) {
        other.m_manager->replaceHandle(other, *this);
    }
}
