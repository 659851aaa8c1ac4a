#include "tabase/taparametermaps.h"

#include "groundwork/tucondition.h"
#include "groundwork/tuelementstream.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

constexpr unsigned int kSetVersion = 0;
constexpr unsigned int kMapVersion = 0;

void writeHead(TuStreamWriteBinary& stream, unsigned int count)
{
    stream.WriteVersion(kSetVersion);
    stream.WriteVersion(kMapVersion);
    stream << count;
}

using Entry = std::pair<CString, TuVariant>;

/// Leaves of the entries with one name the last.
void dropFormerEntries(std::vector<Entry>& entries)
{
    std::vector<std::size_t> order(entries.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        order[i] = i;
    }
    std::ranges::stable_sort(order,
        [&entries](std::size_t a, std::size_t b) { return entries[a].first < entries[b].first; });
    std::vector<bool> isFormer(entries.size());
    bool areAny = false;
    for (std::size_t i = 1; i < order.size(); ++i) {
        if (entries[order[i - 1]].first == entries[order[i]].first) {
            isFormer[order[i - 1]] = true;
            areAny = true;
        }
    }
    if (!areAny) {
        return;
    }
    std::size_t kept = 0;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (!isFormer[i]) {
            std::swap(entries[kept++], entries[i]);
        }
    }
    entries.resize(kept);
}

} // namespace

TaParameterMaps::TaParameterMaps(const TaParameterMaps& other)
{
    for (unsigned int i = 0; i < eL_Count; ++i) {
        Refill(m_limits[i], other.m_limits[i]);
    }
    Refill(m_extensions, other.m_extensions);
    Refill(m_parameters, other.m_parameters);
}

TaParameterMaps& TaParameterMaps::operator=(const TaParameterMaps& other)
{
    if (this != &other) {
        *this = TaParameterMaps(other);
    }
    return *this;
}

TaParameterMaps::ValueMap& TaParameterMaps::GetLimits(unsigned int limit)
{
    TuPreCondition<2>(
        u"the kind of limit is one of the three", TU_HERE, [&] { return limit < eL_Count; });
    return m_limits[limit];
}

void TaParameterMaps::RemoveAll()
{
    m_parameters.RemoveAll();
    m_extensions.RemoveAll();
    for (ValueMap& limits : m_limits) {
        limits.RemoveAll();
    }
}

void TaParameterMaps::SetParameter(
    Name name, const TuVariant& value, const char16_t* source, unsigned int line)
{
    if (!IsInLimits(name, value)) {
        throw TuException(source, line);
    }
    m_parameters.SetFirst(name, value);
}

const TuVariant& TaParameterMaps::GetLimit(
    Name name, unsigned int limit, const char16_t* source, unsigned int line) const
{
    const TuVariant* const found = GetLimits(limit).Lookup(name);
    if (found == nullptr) {
        throw TuException(source, line);
    }
    return *found;
}

bool TaParameterMaps::GetParameter(Name name, const TuVariant& defaultValue, TuVariant& out) const
{
    const bool isThere = m_parameters.Lookup(name, out);
    if (!isThere) {
        out = defaultValue;
    }
    return isThere;
}

CString TaParameterMaps::GetExtension(Name name) const
{
    const CString* const text = m_extensions.Lookup(name);
    return text != nullptr ? *text : CString();
}

void TaParameterMaps::Serialize(TuStreamWriteBinary& stream) const
{
    writeHead(stream, m_parameters.GetCount());
    for (const auto& [name, value] : m_parameters) {
        stream << name;
        value.Serialize(stream);
    }
}

void TaParameterMaps::SerializeSorted(TuStreamWriteBinary& stream) const
{
    std::vector<const ValueMap::SAssociation*> entries;
    entries.reserve(m_parameters.GetCount());
    for (const ValueMap::SAssociation& entry : m_parameters) {
        entries.push_back(&entry);
    }
    std::ranges::sort(entries, {}, [](const auto* entry) { return entry->GetKey().GetView(); });
    writeHead(stream, m_parameters.GetCount());
    for (const ValueMap::SAssociation* entry : entries) {
        stream << entry->GetKey();
        entry->GetValue().Serialize(stream);
    }
}

void TaParameterMaps::Serialize(TuStreamReadBinary& stream)
{
    stream.ReadAndCompareVersion(kSetVersion);
    stream.ReadAndCompareVersion(kMapVersion);
    unsigned int count = 0;
    stream >> count;
    // Names are looked up in none of the buckets, which are few: a long record would take for ever.
    std::vector<Entry> entries;
    for (; count != 0; --count) {
        Entry& entry = entries.emplace_back();
        stream >> entry.first;
        entry.second.Serialize(stream);
    }
    dropFormerEntries(entries);

    ValueMap read;
    for (Entry& entry : entries) {
        read.InsertNew(entry.first, std::move(entry.second));
    }
    m_parameters.Swap(read);
}
