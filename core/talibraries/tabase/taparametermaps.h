#pragma once

#include "groundwork/tuarraymanaged.h"
#include "groundwork/tumap.h"
#include "groundwork/tuvariant.h"
#include "tabase/tabaseapi.h"

#include <array>

class TuStreamReadBinary;
class TuStreamWriteBinary;

/// What both kinds of parameter sets hold beside their groups: values, texts attached to names, and
/// limits. Use TaParameterSet or TaClassParameterSet, which document the whole.
///
/// The stored order of a set follows from the order of the maps, and that from the order of
/// insertion: an entry inserted later comes first in its bucket. Copies are therefore made by
/// insertion, which turns the order in the buckets round, on purpose: it is the same on every
/// system, and stored records depend on it.
///
/// Threads: as a plain value.
class TABASE_API TaParameterMaps
{
public:
    using ValueMap = TuMap<CString, TuVariant>;
    using TextMap = TuMap<CString, CString>;
    using Name = ValueMap::KeyArgument;

    /// The limits by their number, as the sets enumerate them.
    enum ELimit
    {
        eL_Minimum = 0,
        eL_Maximum = 1,
        eL_Other = 2,
        eL_Count = 3,
    };

    TaParameterMaps() = default;
    TaParameterMaps(const TaParameterMaps& other);
    TaParameterMaps(TaParameterMaps&& other) noexcept = default;
    TaParameterMaps& operator=(const TaParameterMaps& other);
    TaParameterMaps& operator=(TaParameterMaps&& other) noexcept = default;
    ~TaParameterMaps() = default;

    ValueMap& GetParameters() { return m_parameters; }
    const ValueMap& GetParameters() const { return m_parameters; }
    TextMap& GetExtensions() { return m_extensions; }
    const TextMap& GetExtensions() const { return m_extensions; }
    /// TuExceptionPreconditionViolation where there is no such limit.
    ValueMap& GetLimits(unsigned int limit);
    const ValueMap& GetLimits(unsigned int limit) const
    {
        return const_cast<TaParameterMaps*>(this)->GetLimits(limit);
    }
    void RemoveAll();

    bool IsInLimits(Name name, const TuVariant& value) const
    {
        return !isBeyond(m_limits[eL_Minimum], name, value, std::weak_ordering::less)
            && !isBeyond(m_limits[eL_Maximum], name, value, std::weak_ordering::greater);
    }

    /// TuException of that place for a value that is not in its limits.
    void SetParameter(Name name, const TuVariant& value, const char16_t* source, unsigned int line);
    bool GetParameter(Name name, const TuVariant& defaultValue, TuVariant& out) const;
    /// TuException of that place where there is none.
    const TuVariant& GetLimit(
        Name name, unsigned int limit, const char16_t* source, unsigned int line) const;
    CString GetExtension(Name name) const;

    /// The record of a set: see TaParameterSet.
    void Serialize(TuStreamWriteBinary& stream) const;
    void SerializeSorted(TuStreamWriteBinary& stream) const;
    void Serialize(TuStreamReadBinary& stream);

    /// Fills `names` with the keys of any map, sorted by UTF-16 unit.
    template <class Value>
    static void GetSortedKeys(const TuMap<CString, Value>& map, TuArrayManaged<CString>& names);
    /// Refills `map` with the entries of `source`, one by one, in the order of that.
    template <class Value>
    static void Refill(TuMap<CString, Value>& map, const TuMap<CString, Value>& source);

private:
    static bool isBeyond(
        const ValueMap& limits, Name name, const TuVariant& value, std::weak_ordering direction)
    {
        const TuVariant* const limit = limits.Lookup(name);
        return limit != nullptr && (value <=> *limit) == direction;
    }

    ValueMap m_parameters;
    TextMap m_extensions;
    std::array<ValueMap, eL_Count> m_limits;
};

template <class Value>
void TaParameterMaps::GetSortedKeys(
    const TuMap<CString, Value>& map, TuArrayManaged<CString>& names)
{
    names.RemoveAll();
    for (const auto& [name, value] : map) {
        names.Add(name);
    }
    names.Sort();
}

template <class Value>
void TaParameterMaps::Refill(TuMap<CString, Value>& map, const TuMap<CString, Value>& source)
{
    map.RemoveAll();
    for (const auto& [name, value] : source) {
        map.InsertNew(name, value);
    }
}
