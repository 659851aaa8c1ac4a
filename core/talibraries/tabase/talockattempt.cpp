#include "tabase/talockattempt.h"

#include "groundwork/tuarray.h"
#include "platform/platformthread.h"

#include <algorithm>

TaLockAttempt::TaLockAttempt(TaDataManager& manager, unsigned int timeout, TaDataHandleBase* handle)
    : m_manager(manager)
    , m_threadId(platform::GetCurrentThreadId())
    , m_timeout(timeout)
    , m_timer(TuTimer::eR_Milliseconds)
    , m_single(handle)
{
    if (timeout != 0) {
        m_timer.Start();
    }
}

TaLockAttempt::~TaLockAttempt()
{
    if (!m_isListed) {
        return;
    }
    const TuCriticalSectionAuto guard(m_manager.m_lock);
    TuList<TaLockAttempt*>& waiting = m_manager.m_waiting;
    waiting.Erase(std::find(waiting.begin(), waiting.end(), this));
    if (m_manager.m_fairness != TaDataManager::eF_None) {
        m_manager.wakeWaiting();
    }
}

TaDataManager::ELockStatus TaLockAttempt::Run()
{
    for (;;) {
        if (const std::optional<ELockStatus> status = pass()) {
            return *status;
        }
        wait();
    }
}

std::optional<TaLockAttempt::ELockStatus> TaLockAttempt::pass()
{
    const TuCriticalSectionAuto guard(m_manager.m_lock);
    if (m_hasTimedOut || m_hasFailed) {
        return fail(m_hasTimedOut ? TaDataManager::eLS_TimedOut : TaDataManager::eLS_WaitFailed);
    }
    if (!m_manager.m_pendingRequests.Has(m_threadId)) {
        return TaDataManager::eLS_NoRequests;
    }
    if (!findObstacles()) {
        return fail(TaDataManager::eLS_InvalidHandle);
    }
    if (m_obstacles.IsEmpty() && !m_isHeldBack) {
        m_single != nullptr ? m_manager.grant(*m_single) : m_manager.grantAll(m_threadId);
        return TaDataManager::eLS_Granted;
    }
    if (m_timeout == 0) {
        return fail(TaDataManager::eLS_Conflict);
    }
    if (m_isLast) {
        return fail(TaDataManager::eLS_TimedOut);
    }
    if (!m_isListed) {
        m_manager.m_waiting.Add(this);
        m_isListed = true;
    }
    return std::nullopt;
}

bool TaLockAttempt::findObstacles() TU_NO_THREAD_SAFETY_ANALYSIS
{
    m_isHeldBack = false;
    return m_single != nullptr
        ? findObstacle(*m_single)
        : m_manager.m_pendingRequests.ForEachOf(
            m_threadId, [this](TaDataHandleBase& handle) { return findObstacle(handle); });
}

bool TaLockAttempt::findObstacle(TaDataHandleBase& handle) TU_NO_THREAD_SAFETY_ANALYSIS
{
    const TaNode* const node = handle.getNode();
    if (!handle.IsValid() || !m_manager.isInTree(node)) {
        return false;
    }
    const bool write = handle.GetAccessRights() == TaDataHandleBase::eAR_Write;
    const bool isFree = (write ? m_manager.m_lockCount : m_manager.m_writeLockCount) == 0;
    if (const TaNode* const obstacle
        = isFree ? nullptr : m_manager.checkReadWriteLocks(node, write)) {
        m_obstacles.Add(TuSmartPointer<const TaNode>(obstacle));
    } else if (!write && m_manager.isHeldBack(m_threadId, *node, *this)) {
        m_isHeldBack = true;
    }
    return true;
}

TaDataManager::ELockStatus TaLockAttempt::fail(ELockStatus reason) TU_NO_THREAD_SAFETY_ANALYSIS
{
    if (m_single != nullptr) {
        m_manager.unrequestLock(*m_single);
    } else {
        m_manager.m_pendingRequests.RemoveAll(m_threadId);
    }
    return reason;
}

void TaLockAttempt::wait()
{
    TuArray<const TuEvent*> events;
    for (const TuSmartPointer<const TaNode>& node : m_obstacles) {
        events.Add(&node->m_unlockedEvent);
    }
    events.Add(&m_wake);
    unsigned int remaining = TuEvent::kInfinite;
    if (m_timeout != TuEvent::kInfinite) {
        const unsigned long long elapsed = m_timer.GetElapsedTime();
        remaining = elapsed < m_timeout ? static_cast<unsigned int>(m_timeout - elapsed) : 0;
        m_isLast = remaining == 0;
    }
    switch (TuEvent::WaitForMultipleEvents(events, remaining)) {
    case TuEvent::eWR_Signaled:
        break;
    case TuEvent::eWR_TimedOut:
        m_hasTimedOut = true;
        break;
    case TuEvent::eWR_Failed:
        m_hasFailed = true;
        break;
    }
    m_obstacles.RemoveAll();
}
