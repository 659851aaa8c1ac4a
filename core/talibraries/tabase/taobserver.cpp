#include "tabase/taobserver.h"

#include <iterator>

namespace {

// Most observers have few subscriptions.
constexpr unsigned int kRecordsPerBlock = 4;

} // namespace

TaObserver::TaObserver()
    : m_records(kRecordsPerBlock)
{
}

TaObserver::~TaObserver() { Unobserve(); }

void TaObserver::Observe(TaObservable& observable, EMessageType type, void* userData, int oneShot)
{
    const auto place = m_records.Add({ &observable, userData, type, oneShot, this });
    place->place = place;
    try {
        observable.addObserver(*place);
    } catch (...) {
        m_records.Erase(place);
        throw;
    }
}

void TaObserver::Observe(TaObservable& observable, void* userData, int oneShot)
{
    const unsigned int before = m_records.GetCount();
    try {
        for (std::uint32_t type = 0; type < TaObservableMessage::kTypeCount; ++type) {
            Observe(observable, static_cast<EMessageType>(type), userData, oneShot);
        }
    } catch (...) {
        while (m_records.GetCount() != before) {
            remove(m_records.GetTail());
        }
        throw;
    }
}

bool TaObserver::Unobserve(TaObservable& observable, EMessageType type)
{
    SObservableElement* const record = findRecord(observable, type);
    if (record != nullptr) {
        remove(*record);
    }
    return record != nullptr;
}

bool TaObserver::Unobserve(EMessageType type)
{
    const unsigned int before = m_records.GetCount();
    for (auto it = m_records.begin(); it != m_records.end();) {
        SObservableElement& record = *it++;
        if (record.type == type) {
            remove(record);
        }
    }
    return m_records.GetCount() != before;
}

bool TaObserver::Unobserve(TaObservable& observable)
{
    const unsigned int before = m_records.GetCount();
    forRecordsOf(observable, [this](SObservableElement& record) {
        remove(record);
        return true;
    });
    return m_records.GetCount() != before;
}

bool TaObserver::Unobserve()
{
    const bool hasRecords = !m_records.IsEmpty();
    while (!m_records.IsEmpty()) {
        remove(m_records.GetTail());
    }
    return hasRecords;
}

SObservableElement* TaObserver::findRecord(const TaObservable& observable, EMessageType type)
{
    SObservableElement* found = nullptr;
    forRecordsOf(observable, [&found, type](SObservableElement& record) {
        if (record.type == type) {
            found = &record;
        }
        return found == nullptr || !found->HasEntry();
    });
    return found;
}

/// They stand in two lists, of which one is mostly short: of many observers of one observable each
/// has few subscriptions, and so has each of many observables of one observer.
template <class Use> void TaObserver::forRecordsOf(const TaObservable& observable, Use&& use)
{
    if (observable.m_recordCount < m_records.GetCount()) {
        for (SObservableElement* record = observable.m_firstRecord; record != nullptr;) {
            SObservableElement* const next = record->next;
            if (record->observer == this && !use(*record)) {
                return;
            }
            record = next;
        }
    } else {
        for (auto it = m_records.begin(); it != m_records.end();) {
            SObservableElement& record = *it++;
            if (record.observable == &observable && !use(record)) {
                return;
            }
        }
    }
}

void TaObserver::remove(SObservableElement& record) noexcept
{
    record.observable->removeObserver(record);
    m_records.Erase(record.place);
}
