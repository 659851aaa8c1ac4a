#pragma once

#include "groundwork/cstring.h"
#include "groundwork/tucriticalsection.h"
#include "groundwork/tumap.h"
#include "tabase/tabaseapi.h"

class TaMessageHandlerBase;

/// The handlers by their names. A name belongs to the handler that came with it first.
///
/// Ownership: of nothing.
/// Threads:   any thread may call any member.
/// Failure:   Add throws TuExceptionOutOfMemory or std::bad_alloc.
class TABASE_API TaHandlerNames
{
public:
    void Add(const CString& name, TaMessageHandlerBase& handler);
    /// Whatever name it had when it was added; entries of other handlers stay.
    void Remove(const TaMessageHandlerBase& handler) noexcept;
    /// Null where there is none.
    TaMessageHandlerBase* Find(const CString& name) const;

private:
    static constexpr unsigned int kBlockSize = 10;
    static constexpr unsigned int kBucketCount = 127;

    mutable TuCriticalSection m_lock;
    TuMap<CString, TaMessageHandlerBase*> m_handlers TU_GUARDED_BY(
        m_lock){ kBlockSize, kBucketCount };
};
