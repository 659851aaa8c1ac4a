#include "tabase/taparameterset.h"

#include <utility>

namespace {

constexpr const char16_t* kSource = u"core/talibraries/tabase/taparameterset";
constexpr unsigned int kLineOutOfLimits = 182;
constexpr unsigned int kLineNoConstraint = 301;

} // namespace

TaParameterSet::TaParameterSet(const TaParameterSet& other)
    : m_maps(other.m_maps)
{
    TaParameterMaps::Refill(m_groups, other.m_groups);
}

TaParameterSet& TaParameterSet::operator=(const TaParameterSet& other)
{
    if (this != &other) {
        *this = TaParameterSet(other);
    }
    return *this;
}

TaParameterSet& TaParameterSet::operator=(TaParameterSet&& other) noexcept
{
    // A group of this set would go with the former groups: it is emptied first.
    TaParameterSet taken(std::move(other));
    m_maps = std::move(taken.m_maps);
    m_groups.Swap(taken.m_groups);
    return *this;
}

void TaParameterSet::ResetAll()
{
    m_maps.RemoveAll();
    m_groups.RemoveAll();
}

void TaParameterSet::SetParameter(Name name, const TuVariant& value)
{
    m_maps.SetParameter(name, value, kSource, kLineOutOfLimits);
}

const TuVariant& TaParameterSet::GetConstraint(Name name, EParameterConstraint kind) const
{
    return m_maps.GetLimit(name, kind, kSource, kLineNoConstraint);
}
