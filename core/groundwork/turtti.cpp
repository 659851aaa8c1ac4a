#include "groundwork/turtti.h"

#include "groundwork/iobject.h"

#include <algorithm>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace {

#if defined(NDEBUG)
constexpr bool kReportDuplicates = false;
#else
constexpr bool kReportDuplicates = true;
#endif

} // namespace

/// The records of this process by name. Loading a library only appends to a list; the hash table
/// takes the new records in when the next look-up needs it.
class TuRTTITable
{
public:
    /// Never destroyed: records of other libraries may leave after our own statics are gone.
    static TuRTTITable& GetTable()
    {
        static TuRTTITable& table = *new TuRTTITable;
        return table;
    }

    void Add(const TuRTTI& record)
    {
        const std::lock_guard guard(m_lock);
        m_waiting.push_back(&record);
    }

    void Remove(const TuRTTI& record)
    {
        const std::lock_guard guard(m_lock);
        if (std::erase(m_waiting, &record) != 0) {
            return;
        }
        const auto entry = m_records.find(record.GetClassName());
        Records records = std::move(entry->second);
        m_records.erase(entry); // its key is the text of a record that may be the one that leaves
        std::erase(records, &record);
        if (!records.empty()) {
            m_records.emplace(records.front()->GetClassName(), std::move(records));
        }
    }

    const TuRTTI* Find(const CString& name)
    {
        std::vector<std::pair<const TuRTTI*, const TuRTTI*>> duplicates;
        TuRTTI::DuplicateHook hook = nullptr;
        const TuRTTI* found = nullptr;
        {
            const std::lock_guard guard(m_lock);
            for (const TuRTTI* record : m_waiting) {
                Records& records = m_records[record->GetClassName()];
                records.push_back(record);
                if (records.size() > 1 && kReportDuplicates) {
                    duplicates.emplace_back(records.front(), record);
                }
            }
            m_waiting.clear();
            hook = m_hook;
            const auto entry = m_records.find(name);
            found = entry != m_records.end() ? entry->second.front() : nullptr;
        }
        for (const auto& [first, hidden] : duplicates) {
            if (hook != nullptr) {
                hook(*first, *hidden);
            }
        }
        return found;
    }

    TuRTTI::DuplicateHook SetHook(TuRTTI::DuplicateHook hook)
    {
        const std::lock_guard guard(m_lock);
        return std::exchange(m_hook, hook);
    }

private:
    using Records = std::vector<const TuRTTI*>; // of one name, the oldest first

    std::mutex m_lock; // guards all below
    std::vector<const TuRTTI*> m_waiting; // registered, and not yet in the hash table
    std::unordered_map<std::u16string_view, Records> m_records;
    TuRTTI::DuplicateHook m_hook = nullptr;
};

TuRTTI::TuRTTI(const CString& name, const TuRTTI* firstBase, const TuRTTI* secondBase,
    CreateFunction create, CloneFunction clone)
    : m_name(name)
    , m_firstBase(firstBase)
    , m_secondBase(secondBase)
    , m_create(create)
    , m_clone(clone)
{
    TuRTTITable::GetTable().Add(*this);
}

TuRTTI::TuRTTI(const CString& name, CreateFunction create, CloneFunction clone)
    : TuRTTI(name, nullptr, nullptr, create, clone)
{
}

TuRTTI::TuRTTI(const CString& name, const TuRTTI& base, CreateFunction create, CloneFunction clone)
    : TuRTTI(name, &base, nullptr, create, clone)
{
}

TuRTTI::TuRTTI(const CString& name, const TuRTTI& firstBase, const TuRTTI& secondBase,
    CreateFunction create, CloneFunction clone)
    : TuRTTI(name, &firstBase, &secondBase, create, clone)
{
}

TuRTTI::~TuRTTI()
{
    TuRTTITable::GetTable().Remove(*this);
    delete[] m_ancestors.load(std::memory_order_acquire);
}

TuRTTI::CreateFunction TuRTTI::getCreate(const CString& name)
{
    const TuRTTI* record = TuRTTITable::GetTable().Find(name);
    return record != nullptr ? record->m_create : nullptr;
}

TuRTTI::CloneFunction TuRTTI::getClone(const CString& name)
{
    const TuRTTI* record = TuRTTITable::GetTable().Find(name);
    return record != nullptr ? record->m_clone : nullptr;
}

TuRTTI::DuplicateHook TuRTTI::SetDuplicateHook(DuplicateHook hook)
{
    return TuRTTITable::GetTable().SetHook(hook);
}

const TuRTTI* const* TuRTTI::findAncestors() const
{
    std::vector<const TuRTTI*> found;
    const auto addBasesOf = [&found](const TuRTTI& record) {
        for (const TuRTTI* base : { record.m_firstBase, record.m_secondBase }) {
            if (base != nullptr && std::find(found.begin(), found.end(), base) == found.end()) {
                found.push_back(base);
            }
        }
    };
    addBasesOf(*this);
    for (std::size_t i = 0; i < found.size(); ++i) {
        addBasesOf(*found[i]);
    }
    found.push_back(nullptr);

    auto* list = new const TuRTTI*[found.size()];
    std::copy(found.begin(), found.end(), list);
    const TuRTTI* const* expected = nullptr;
    if (!m_ancestors.compare_exchange_strong(
            expected, list, std::memory_order_acq_rel, std::memory_order_acquire)) {
        delete[] list; // another thread was faster
        return expected;
    }
    return list;
}
