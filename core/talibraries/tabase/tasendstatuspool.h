#pragma once

#include "groundwork/tucriticalsection.h"
#include "groundwork/tureferencecounted.h"
#include "groundwork/tusmartpointer.h"
#include "groundwork/tustack.h"
#include "tabase/tathreadsendstatus.h"

/// The send statuses that nobody uses at the moment. They are kept for their events and lists,
/// which are made once; more than `kMostKept` are not.
///
/// Ownership: of the idle ones; those in use keep the pool.
/// Threads:   any thread may call any member.
class TABASE_API TaSendStatusPool : public TuReferenceCounted
{
public:
    /// One of the idle ones, or a new one. Throws std::bad_alloc.
    TaSendStatusUse Take();

private:
    friend class TaSendStatusUse;

    static constexpr unsigned int kMostKept = 64;

    static void giveBack(TaThreadSendStatus& used) noexcept;

    TuCriticalSection m_lock;
    TuStack<TuSmartPointer<TaThreadSendStatus>> m_idle TU_GUARDED_BY(m_lock);
};
