#pragma once

#include "tabase/taparametermaps.h"

#include <cstdint>
#include <memory>

/// The parameter set that a class publishes about itself: a TaParameterSet, and per name the
/// identifiers of two texts, a name to display and a description, so that a user interface can
/// label and explain each parameter in the user's language. The texts are the application's.
///
/// The identifiers of names to display belong to the class that owns the set, not to the values:
/// assignment leaves those of the target alone, a copy has none, and neither have the groups of
/// either. The identifiers of descriptions are copied like everything else.
///
/// All else is as for TaParameterSet: order, ownership, threads, failure, and the stored form,
/// which holds the values alone.
class TABASE_API TaClassParameterSet
{
public:
    enum EParameterConstraint
    {
        eConstraintMinimum = TaParameterMaps::eL_Minimum, // inclusive
        eConstraintMaximum = TaParameterMaps::eL_Maximum, // inclusive
        eConstraintOther = TaParameterMaps::eL_Other, // for the user's own purposes
    };
    using Name = TaParameterMaps::Name;
    using GroupMap = TuMap<CString, TaClassParameterSet>;

    TaClassParameterSet();
    TaClassParameterSet(const TaClassParameterSet& other);
    TaClassParameterSet& operator=(const TaClassParameterSet& other);
    /// A new set takes all, the identifiers of names to display included. What was moved from is
    /// empty.
    TaClassParameterSet(TaClassParameterSet&& other) noexcept = default;
    /// As the assignment of a copy, the target's identifiers of names to display stay.
    TaClassParameterSet& operator=(TaClassParameterSet&& other) noexcept;
    ~TaClassParameterSet() = default;

    /// Exchanges all.
    void Swap(TaClassParameterSet& other) noexcept;
    friend void swap(TaClassParameterSet& a, TaClassParameterSet& b) noexcept { a.Swap(b); }

    /// Removes everything, limits, identifiers and groups included.
    void ResetAll();

    int HasParameter(Name name) const { return m_maps.GetParameters().Contains(name); }
    /// TuException for a value that is not in its limits.
    void SetParameter(Name name, const TuVariant& value);
    /// 0 where there is no such value; `out` is then unchanged.
    int GetParameter(Name name, TuVariant& out) const
    {
        return m_maps.GetParameters().Lookup(name, out);
    }
    /// 0 where there is no such value; `out` is then the default, which may be `out` itself.
    int GetParameter(Name name, const TuVariant& defaultValue, TuVariant& out) const
    {
        return m_maps.GetParameter(name, defaultValue, out);
    }
    void DeleteParameter(Name name) { m_maps.GetParameters().RemoveKey(name); }
    /// Fills `keys` with all names, sorted by UTF-16 unit.
    void GetParameterKeys(TuArrayManaged<CString>& keys) const
    {
        TaParameterMaps::GetSortedKeys(GetParameters(), keys);
    }
    TaParameterMaps::ValueMap& GetParameters() { return m_maps.GetParameters(); }
    const TaParameterMaps::ValueMap& GetParameters() const { return m_maps.GetParameters(); }

    void SetConstraint(Name name, EParameterConstraint kind, const TuVariant& value)
    {
        m_maps.GetLimits(kind).SetAt(name, value);
    }
    int HasConstraint(Name name, EParameterConstraint kind) const
    {
        return m_maps.GetLimits(kind).Contains(name);
    }
    /// TuException where there is none.
    const TuVariant& GetConstraint(Name name, EParameterConstraint kind) const;
    void DeleteConstraint(Name name, EParameterConstraint kind)
    {
        m_maps.GetLimits(kind).RemoveKey(name);
    }
    int IsInLimits(Name name, const TuVariant& value) const
    {
        return m_maps.IsInLimits(name, value);
    }

    void SetExtension(Name name, const CString& text) { m_maps.GetExtensions().SetAt(name, text); }
    int HasExtension(Name name) const { return m_maps.GetExtensions().Contains(name); }
    /// Empty where there is none.
    CString GetExtension(Name name) const { return m_maps.GetExtension(name); }

    /// Identifiers have 32 bits: of a wider number the lower ones count. 0 stands for none.
    void SetResourceID(Name name, unsigned long id);
    int HasResourceID(Name name) const { return m_resourceIDs.Contains(name); }
    /// 0 where there is none.
    unsigned long GetResourceID(Name name) const;
    void SetDescriptionID(Name name, unsigned long id);
    int HasDescriptionID(Name name) const { return m_descriptionIDs.Contains(name); }
    /// 0 where there is none.
    unsigned long GetDescriptionID(Name name) const;

    /// The group of that name, made where there is none yet.
    TaClassParameterSet& AddGroup(Name name) { return GetGroups()[name]; }
    int IsGroup(Name name) const { return GetGroups().Contains(name); }
    int HasGroups() const { return !GetGroups().IsEmpty(); }
    /// TuExceptionPreconditionViolation where there is none: ask IsGroup before.
    TaClassParameterSet& GetGroup(Name name) { return GetGroups().GetAt(name); }
    const TaClassParameterSet& GetGroup(Name name) const { return GetGroups().GetAt(name); }
    void RemoveGroup(Name name) { GetGroups().RemoveKey(name); }
    void RemoveGroups() { GetGroups().RemoveAll(); }
    void GetGroupNames(TuArrayManaged<CString>& names) const
    {
        TaParameterMaps::GetSortedKeys(GetGroups(), names);
    }
    GroupMap& GetGroups();
    const GroupMap& GetGroups() const;

    void Serialize(TuStreamWriteBinary& stream) const { m_maps.Serialize(stream); }
    void SerializeSorted(TuStreamWriteBinary& stream) const { m_maps.SerializeSorted(stream); }
    void Serialize(TuStreamReadBinary& stream) { m_maps.Serialize(stream); }

private:
    using IdentifierMap = TuMap<CString, std::uint32_t>;

    static unsigned long find(const IdentifierMap& identifiers, Name name);

    TaParameterMaps m_maps;
    IdentifierMap m_resourceIDs;
    IdentifierMap m_descriptionIDs;
    std::unique_ptr<GroupMap> m_groups; // null in what was moved from
};
