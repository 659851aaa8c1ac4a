#include "tabase/taclassparameterset.h"

#include <utility>

namespace {

constexpr const char16_t* kSource = u"core/talibraries/tabase/taclassparameterset";
constexpr unsigned int kLineOutOfLimits = 191;
constexpr unsigned int kLineNoConstraint = 301;

} // namespace

TaClassParameterSet::TaClassParameterSet()
    : m_groups(std::make_unique<GroupMap>())
{
}

TaClassParameterSet::TaClassParameterSet(const TaClassParameterSet& other)
    : m_maps(other.m_maps)
    , m_groups(std::make_unique<GroupMap>())
{
    TaParameterMaps::Refill(m_descriptionIDs, other.m_descriptionIDs);
    TaParameterMaps::Refill(*m_groups, other.GetGroups());
}

TaClassParameterSet& TaClassParameterSet::operator=(const TaClassParameterSet& other)
{
    if (this != &other) {
        *this = TaClassParameterSet(other);
    }
    return *this;
}

TaClassParameterSet& TaClassParameterSet::operator=(TaClassParameterSet&& other) noexcept
{
    // A group of this set would go with the former groups: it is emptied first.
    TaClassParameterSet taken(std::move(other));
    taken.m_resourceIDs.Swap(m_resourceIDs);
    Swap(taken);
    return *this;
}

void TaClassParameterSet::Swap(TaClassParameterSet& other) noexcept
{
    std::swap(m_maps, other.m_maps);
    m_resourceIDs.Swap(other.m_resourceIDs);
    m_descriptionIDs.Swap(other.m_descriptionIDs);
    m_groups.swap(other.m_groups);
}

void TaClassParameterSet::ResetAll()
{
    m_maps.RemoveAll();
    m_resourceIDs.RemoveAll();
    m_descriptionIDs.RemoveAll();
    RemoveGroups();
}

void TaClassParameterSet::SetParameter(Name name, const TuVariant& value)
{
    m_maps.SetParameter(name, value, kSource, kLineOutOfLimits);
}

const TuVariant& TaClassParameterSet::GetConstraint(Name name, EParameterConstraint kind) const
{
    return m_maps.GetLimit(name, kind, kSource, kLineNoConstraint);
}

void TaClassParameterSet::SetResourceID(Name name, unsigned long id)
{
    m_resourceIDs.SetAt(name, static_cast<std::uint32_t>(id));
}

void TaClassParameterSet::SetDescriptionID(Name name, unsigned long id)
{
    m_descriptionIDs.SetAt(name, static_cast<std::uint32_t>(id));
}

unsigned long TaClassParameterSet::GetResourceID(Name name) const
{
    return find(m_resourceIDs, name);
}

unsigned long TaClassParameterSet::GetDescriptionID(Name name) const
{
    return find(m_descriptionIDs, name);
}

unsigned long TaClassParameterSet::find(const IdentifierMap& identifiers, Name name)
{
    const std::uint32_t* const id = identifiers.Lookup(name);
    return id != nullptr ? *id : 0;
}

TaClassParameterSet::GroupMap& TaClassParameterSet::GetGroups()
{
    if (m_groups == nullptr) {
        m_groups = std::make_unique<GroupMap>();
    }
    return *m_groups;
}

const TaClassParameterSet::GroupMap& TaClassParameterSet::GetGroups() const
{
    static const GroupMap s_none;
    return m_groups != nullptr ? *m_groups : s_none;
}
