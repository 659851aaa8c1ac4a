#include "tabase/tamessagetrace.h"

#include "platform/platformthread.h"
#include "tabase/tamessage.h"

constinit std::atomic<TaMessageTrace::Hook> TaMessageTrace::s_hook{ nullptr };

TaMessageTrace::Hook TaMessageTrace::SetHook(Hook hook) noexcept { return s_hook.exchange(hook); }

void TaMessageTrace::report(SMessageTrace::EStep step, bool isSend, const TaMessage& message,
    SMessageSource source, const CString* handler) noexcept
{
    if (const Hook hook = s_hook.load(std::memory_order_acquire)) {
        hook({ step, isSend, message.GetClassName(), message.GetID(), source, handler,
            platform::GetCurrentThreadId() });
    }
}
