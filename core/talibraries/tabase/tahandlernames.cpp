#include "tabase/tahandlernames.h"

void TaHandlerNames::Add(const CString& name, TaMessageHandlerBase& handler)
{
    const TuCriticalSectionAuto guard(m_lock);
    m_handlers.Insert(name, &handler);
}

void TaHandlerNames::Remove(const TaMessageHandlerBase& handler) noexcept
{
    const TuCriticalSectionAuto guard(m_lock);
    for (auto entry = m_handlers.begin(); entry != m_handlers.end();) {
        if (entry->GetValue() == &handler) {
            entry = m_handlers.Erase(entry);
        } else {
            ++entry;
        }
    }
}

TaMessageHandlerBase* TaHandlerNames::Find(const CString& name) const
{
    const TuCriticalSectionAuto guard(m_lock);
    TaMessageHandlerBase* handler = nullptr;
    (void)m_handlers.Lookup(name, handler);
    return handler;
}
