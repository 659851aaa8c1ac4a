#include "tabase/tasendstatususe.h"

#include "tabase/tasendstatuspool.h"

TaSendStatusUse::TaSendStatusUse(const TaSendStatusUse& other) noexcept
    : m_status(other.m_status)
{
    if (m_status != nullptr) {
        m_status->m_uses.fetch_add(1, std::memory_order_relaxed);
    }
}

TaSendStatusUse::~TaSendStatusUse()
{
    if (m_status != nullptr && m_status->m_uses.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        TaSendStatusPool::giveBack(*m_status);
    }
}
