#pragma once

#include "groundwork/tuarray.h"
#include "groundwork/tuloglistener.h"
#include "groundwork/tusingleton.h"
#include "groundwork/tusmartpointer.h"

class TuLogListenerManager;
TU_DECLARE_SINGLETON(GROUNDWORK_API, TuLogListenerManager)

/// Hands each line of the log to all listeners, in the order in which they were added.
///
/// A listener that writes to standard error is there from the start; remove it to be rid of it:
///
///     TuLogListenerManager& log = TuLogListenerManager::GetInstance();
///     log.RemoveListener(*log.GetDefaultListener());
///
/// The manager can be used by static initialisers and by what runs at the exit of the process: it
/// is never deleted.
///
/// Ownership: it shares its listeners.
/// Threads:   any thread may call any member. A line that is on its way while a listener is removed
///            may still reach it.
/// Failure:   NotifyListeners throws nothing; what a listener throws is dropped, and so is the line
///            where there is no memory for it.
class GROUNDWORK_API TuLogListenerManager : public TuSingleton<TuLogListenerManager>
{
public:
    void AddListener(const TuSmartPointer<TuLogListener>& listener);
    /// Returns whether it was there.
    bool RemoveListener(const TuLogListener& listener);
    const TuSmartPointer<TuLogListener>& GetDefaultListener() const { return m_default; }

    void NotifyListeners(
        unsigned int level, const CString& source, unsigned int line, const CString& text) noexcept;

private:
    friend class TuSingleton<TuLogListenerManager>;
    static constexpr bool kLivesToTheEnd = true;

    TuLogListenerManager();
    ~TuLogListenerManager() override = default;

    const TuSmartPointer<TuLogListener> m_default;
    TuCriticalSection m_lock;
    TuArray<TuSmartPointer<TuLogListener>> m_listeners TU_GUARDED_BY(m_lock);
};
