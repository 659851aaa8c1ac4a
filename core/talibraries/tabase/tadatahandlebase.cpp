#include "tabase/tadatahandlebase.h"

#include "platform/platformthread.h"
#include "tabase/tadatamanager.h"

TaDataHandleBase::TaDataHandleBase(TaDataManager& manager)
    : m_manager(&manager)
    , m_threadId(platform::GetCurrentThreadId())
{
    manager.registerHandle(*this);
}

TaDataHandleBase::~TaDataHandleBase()
{
    if (m_manager != nullptr) {
        m_manager->unregisterHandle(*this);
    }
}

void TaDataHandleBase::requestLock()
{
    if (m_manager != nullptr) {
        m_manager->requestLock(*this);
    }
}

void TaDataHandleBase::releaseLock() noexcept
{
    if (m_manager != nullptr) {
        m_manager->unrequestLock(*this);
        m_manager->unlock(*this);
    }
}

void TaDataHandleBase::takeOver(TaDataHandleBase& other) noexcept
{
    if (m_manager != nullptr) {
        m_manager->unregisterHandle(*this);
        m_manager = nullptr;
    }
    m_threadId = other.m_threadId;
    m_used = other.m_used;
    if (other.m_manager != nullptr) {
        other.m_manager->replaceHandle(other, *this);
    }
}
