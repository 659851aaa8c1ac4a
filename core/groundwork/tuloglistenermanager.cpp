#include "groundwork/tuloglistenermanager.h"

TU_DEFINE_SINGLETON(TuLogListenerManager)

TuLogListenerManager::TuLogListenerManager()
    : m_default(TuMake<TuLogListenerStandardError>())
{
    m_listeners.Add(m_default);
}

void TuLogListenerManager::AddListener(const TuSmartPointer<TuLogListener>& listener)
{
    const TuCriticalSectionAuto guard(m_lock);
    m_listeners.Add(listener);
}

bool TuLogListenerManager::RemoveListener(const TuLogListener& listener)
{
    TuSmartPointer<TuLogListener> removed; // given up when the lock is left
    const TuCriticalSectionAuto guard(m_lock);
    for (unsigned int i = 0; i < m_listeners.GetSize(); ++i) {
        if (m_listeners[i].Get() == &listener) {
            removed = m_listeners[i];
            m_listeners.RemoveAt(i);
            return true;
        }
    }
    return false;
}

void TuLogListenerManager::NotifyListeners(
    unsigned int level, const CString& source, unsigned int line, const CString& text) noexcept
{
    try {
        TuArray<TuSmartPointer<TuLogListener>> listeners;
        {
            const TuCriticalSectionAuto guard(m_lock);
            listeners = m_listeners;
        }
        const SLogLine entry{ level, source, line, text };
        for (const TuSmartPointer<TuLogListener>& listener : listeners) {
            try {
                listener->onLog(entry);
            } catch (...) { // the log is where failures end
            }
        }
    } catch (...) { // no memory
    }
}
