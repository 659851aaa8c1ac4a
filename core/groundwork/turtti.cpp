#include "groundwork/turtti.h"

#include "groundwork/iobject.h"
#include "groundwork/tuloglistenermanager.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

#if defined(NDEBUG)
constexpr bool kReportDuplicates = false;
#else
constexpr bool kReportDuplicates = true;
#endif

/// Until somebody else wants to know.
void logDuplicate(const TuRTTI& found, const TuRTTI& /*hidden*/)
{
    TuLogListenerManager::GetInstance().NotifyListeners(eLL_Warning, u"core/groundwork/turtti",
        __LINE__,
        u"two classes are registered as '" + CString(found.GetClassName())
            + u"'; the first one is found by this name");
}

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

    void Remove(const TuRTTI& record) noexcept
    {
        const std::lock_guard guard(m_lock);
        std::erase(m_waiting, &record);
        std::erase_if(m_duplicates, [&record](const Duplicate& duplicate) {
            return duplicate.first == &record || duplicate.second == &record;
        });
        const auto entry = m_records.find(record.GetClassName());
        if (entry == m_records.end()) {
            return;
        }
        std::erase(entry->second, &record);
        // The key is the text of a record that may be the one that leaves.
        auto node = m_records.extract(entry);
        if (!node.mapped().empty()) {
            node.key() = node.mapped().front()->GetClassName();
            m_records.insert(std::move(node));
        }
    }

    const TuRTTI* Find(const CString& name)
    {
        std::vector<Duplicate> duplicates;
        TuRTTI::DuplicateHook hook = nullptr;
        const TuRTTI* found = nullptr;
        {
            const std::lock_guard guard(m_lock);
            takeWaiting();
            hook = m_hook;
            if (hook != nullptr) {
                duplicates.swap(m_duplicates);
            }
            const auto entry = m_records.find(name);
            const bool isKnown = entry != m_records.end() && !entry->second.empty();
            found = isKnown ? entry->second.front() : nullptr;
        }
        for (const auto& [first, hidden] : duplicates) {
            hook(*first, *hidden);
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
    using Duplicate = std::pair<const TuRTTI*, const TuRTTI*>; // found, hidden

    /// A record leaves the waiting list only when it is in the hash table: memory may run out
    /// between any two of them.
    void takeWaiting()
    {
        std::reverse(m_waiting.begin(), m_waiting.end());
        try {
            for (; !m_waiting.empty(); m_waiting.pop_back()) {
                const TuRTTI* record = m_waiting.back();
                Records& records = m_records[record->GetClassName()];
                records.reserve(records.size() + 1);
                if (kReportDuplicates && !records.empty()) {
                    m_duplicates.emplace_back(records.front(), record);
                }
                records.push_back(record);
            }
        } catch (...) {
            std::reverse(m_waiting.begin(), m_waiting.end());
            throw;
        }
    }

    std::mutex m_lock; // guards all below
    std::vector<const TuRTTI*> m_waiting; // registered, and not yet in the hash table
    std::unordered_map<std::u16string_view, Records> m_records;
    std::vector<Duplicate> m_duplicates; // found, and not yet reported
    TuRTTI::DuplicateHook m_hook = logDuplicate;
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
    m_made.store(true, std::memory_order_release);
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
    delete[] m_ancestors.exchange(nullptr, std::memory_order_acq_rel);
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

bool TuRTTI::hasBase(const TuRTTI& record) const
{
    return (m_firstBase != nullptr && (m_firstBase == &record || m_firstBase->hasBase(record)))
        || (m_secondBase != nullptr && (m_secondBase == &record || m_secondBase->hasBase(record)));
}

bool TuRTTI::isComplete() const
{
    return m_made.load(std::memory_order_acquire)
        && (m_firstBase == nullptr || m_firstBase->isComplete())
        && (m_secondBase == nullptr || m_secondBase->isComplete());
}

/// Asked while static objects are still made, a record may not know all bases of its bases yet;
/// what is found then must not stay.
bool TuRTTI::isKindOfUnlisted(const TuRTTI& record) const
{
    if (isComplete()) {
        try {
            listAncestors();
        } catch (const std::bad_alloc&) { // the next question tries again
        }
    }
    return hasBase(record);
}

void TuRTTI::listAncestors() const
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
            expected, list, std::memory_order_release, std::memory_order_relaxed)) {
        delete[] list; // another thread was faster
    }
}
