#pragma once

#include "groundwork/tusmartpointer.h"
#include "tabase/tamessage.h"
#include "tabase/tarunnable.h"

#include <utility>

/// Carries a piece of work. It is delivered like any message: the handler that receives it takes
/// the work and runs it.
///
/// Ownership: shares the work; copies of the message carry the same.
class TABASE_API TaMessageRunnable : public TaMessage
{
    TU_DECLARE_RTTI

public:
    explicit TaMessageRunnable(TuSmartPointer<TaRunnable> runnable)
        : m_runnable(std::move(runnable))
    {
    }

    TuSmartPointer<TaRunnable> GetRunnable() const { return m_runnable; }

private:
    TuSmartPointer<TaRunnable> m_runnable;
};
