#include "tabase/tasendstatuspool.h"

#include <new>
#include <utility>

TaSendStatusUse TaSendStatusPool::Take()
{
    TuSmartPointer<TaThreadSendStatus> status;
    {
        const TuCriticalSectionAuto guard(m_lock);
        if (!m_idle.IsEmpty()) {
            status = m_idle.Pop();
        }
    }
    if (status.IsNull()) {
        status = TuMake<TaThreadSendStatus>();
    }
    status->m_pool = this;
    status->m_uses.store(1, std::memory_order_relaxed);
    return TaSendStatusUse(*status.Detach());
}

void TaSendStatusPool::giveBack(TaThreadSendStatus& used) noexcept
{
    auto status = TuSmartPointer<TaThreadSendStatus>::Adopt(&used);
    status->clear();
    const TuSmartPointer<TaSendStatusPool> pool = std::move(status->m_pool);
    const TuCriticalSectionAuto guard(pool->m_lock);
    if (pool->m_idle.GetCount() < kMostKept) {
        try {
            pool->m_idle.Push(std::move(status));
        } catch (const std::exception&) { // no memory: it goes
        }
    }
}
