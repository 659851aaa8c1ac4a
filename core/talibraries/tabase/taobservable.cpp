#include "tabase/taobservable.h"

#include "groundwork/tucondition.h"
#include "tabase/taobserver.h"

#include <iterator>

namespace {

void checkType(TaObservable::EMessageType type)
{
    TuPreCondition<2>(u"a message is of one of the 22 types", TU_HERE,
        [type] { return type < TaObservableMessage::kTypeCount; });
}

} // namespace

/// A notification in progress, on the stack of the function that notifies.
class TaObservable::Notification
{
public:
    Notification(TaObservable& observable, EMessageType type)
        : m_observable(&observable)
        , m_type(type)
        , m_outer(observable.m_innermost)
    {
        m_observable->m_innermost = this;
        ++m_observable->m_notifyDepth;
    }
    Notification(const Notification&) = delete;
    Notification& operator=(const Notification&) = delete;
    ~Notification()
    {
        if (IsAbandoned()) {
            return;
        }
        m_observable->m_innermost = m_outer;
        if (--m_observable->m_notifyDepth == 0) {
            m_observable->removeEmptyEntries(m_type);
        }
    }

    /// For this notification and those around it: their observable is no more.
    void Abandon()
    {
        for (Notification* notification = this; notification != nullptr;) {
            notification->m_observable = nullptr;
            notification = notification->m_outer;
        }
    }
    bool IsAbandoned() const { return m_observable == nullptr; }

private:
    TaObservable* m_observable;
    EMessageType m_type;
    Notification* m_outer;
};

TaObservable::~TaObservable()
{
    NotifyObservers(TaObservableMessage::eMT_Destroyed, nullptr);
    if (m_innermost != nullptr) {
        m_innermost->Abandon();
    }
    removeObservers();
}

void TaObservable::NotifyObservers(EMessageType type, void* parameter)
{
    notify(type, [this, type, parameter](const TaObserverInfo& info) {
        const TaObservableMessage message(type, info.userData);
        if (info.oneShot != 0) {
            info.observer->Unobserve(*this, type);
        }
        info.observer->onNotify(*this, message, parameter);
    });
}

void TaObservable::SendMessage(const TaObservableMessage& message, void* parameter)
{
    notify(message.GetType(), [this, &message, parameter](const TaObserverInfo& info) {
        info.observer->onNotify(*this, message, parameter);
    });
}

template <class Call> void TaObservable::notify(EMessageType type, Call&& call)
{
    checkType(type);
    if (m_lists.IsEmpty() || m_lists[type].IsEmpty()) {
        return;
    }
    const ObserverList& list = m_lists[type];
    const Notification notification(*this, type);
    // Entries stay linked while a notification is in progress, so the last one does, too.
    const auto last = std::prev(list.end());
    for (auto it = list.begin();; ++it) {
        const TaObserverInfo info = *it; // the call may empty the entry
        if (info.observer != nullptr) {
            try {
                call(info);
            } catch (...) { // an observer's failure is its own affair
            }
            if (notification.IsAbandoned()) {
                return;
            }
        }
        if (it == last) {
            return;
        }
    }
}

int TaObservable::IsObserver(const TaObserver& observer) const
{
    for (std::uint32_t type = 0; type < TaObservableMessage::kTypeCount; ++type) {
        if (IsObserver(observer, static_cast<EMessageType>(type)) != 0) {
            return 1;
        }
    }
    return 0;
}

int TaObservable::IsObserver(const TaObserver& observer, EMessageType type) const
{
    for (const TaObserverInfo& info : GetObserverList(type)) {
        if (info.observer == &observer) {
            return 1;
        }
    }
    return 0;
}

unsigned long TaObservable::GetObserverCount(EMessageType type) const
{
    return GetObserverList(type).GetCount();
}

const TaObservable::ObserverList& TaObservable::GetObserverList(EMessageType type) const
{
    checkType(type);
    static const ObserverList s_none;
    return m_lists.IsEmpty() ? s_none : m_lists[type];
}

std::uint64_t TaObservable::GetMemoryUsage() const
{
    std::uint64_t bytes = sizeof(*this);
    for (const ObserverList& list : m_lists) {
        bytes += sizeof(list) + std::uint64_t{ list.GetCount() } * sizeof(ObserverList::Node);
    }
    return bytes;
}

void TaObservable::addObserver(SObservableElement& record)
{
    checkType(record.type);
    if (m_lists.IsEmpty()) {
        makeLists();
    }
    const SObservableElement* const former = record.observer->findRecord(*this, record.type);
    if (former == nullptr || !former->HasEntry()) {
        record.entry
            = m_lists[record.type].Add({ record.observer, record.userData, record.oneShot });
    }
    TuListPolicyDoubleLinked::Link(&record, m_lastRecord, static_cast<SObservableElement*>(nullptr),
        m_firstRecord, m_lastRecord);
    ++m_recordCount;
}

void TaObservable::makeLists()
{
    const auto entries = TuMake<ObserverList::PlexManager>(); // the lists share the blocks
    TuArray<ObserverList> lists;
    lists.Reserve(TaObservableMessage::kTypeCount);
    while (lists.GetSize() != TaObservableMessage::kTypeCount) {
        lists.Emplace(entries);
    }
    m_lists.Swap(lists);
}

void TaObservable::removeObserver(SObservableElement& record) noexcept
{
    TuListPolicyDoubleLinked::Unlink(&record, m_firstRecord, m_lastRecord);
    --m_recordCount;
    if (!record.HasEntry()) {
        return;
    }
    if (m_notifyDepth == 0) {
        m_lists[record.type].Erase(record.entry);
    } else {
        record.entry->observer = nullptr;
        m_emptied |= 1u << record.type;
    }
}

void TaObservable::removeObservers() noexcept
{
    while (m_firstRecord != nullptr) {
        m_firstRecord->observer->remove(*m_firstRecord);
    }
}

void TaObservable::removeEmptyEntries(EMessageType type) noexcept
{
    const std::uint32_t bit = 1u << type;
    if ((m_emptied & bit) == 0) {
        return;
    }
    m_emptied &= ~bit;
    ObserverList& list = m_lists[type];
    for (auto it = list.begin(); it != list.end();) {
        it = it->observer == nullptr ? list.Erase(it) : std::next(it);
    }
}
