#pragma once

#include "tabase/taparametermaps.h"

/// A bag of named values: the settings of an algorithm, a step of a workflow, a program.
///
/// Names are case-sensitive. A name can be at the same time that of a value, of an extension (a
/// free text), of limits, and of a group (a set within the set); each is independent of the others,
/// so that limits may be declared before there is a value.
///
///     TaParameterSet settings;
///     settings.SetConstraint(u"steps", TaParameterSet::eConstraintMaximum, 100);
///     settings.SetParameter(u"steps", 20);
///     settings.AddGroup(u"output").SetParameter(u"digits", 6);
///     TuVariant steps;
///     settings.GetParameter(u"steps", 10, steps); // 10 where there is no such value
///
/// Iteration follows the maps (see TuMap): a value set again comes first in its bucket, and a copy
/// has the entries of each bucket the other way round. So equal sets need not be stored as equal
/// bytes: use SerializeSorted where that matters.
///
/// A set is meant for up to some hundred names: the number of buckets is 17, and with 10,000 names
/// each look-up walks along some hundred of them.
///
/// Ownership: of all it holds; references to groups stay valid until the group, or the set, is
///            removed or assigned to.
/// Threads:   as a plain value.
/// Failure:   TuException as stated; TuExceptionOutOfMemory. The set is then as it was.
class TABASE_API TaParameterSet
{
public:
    enum EParameterConstraint
    {
        eConstraintMinimum = TaParameterMaps::eL_Minimum, // inclusive
        eConstraintMaximum = TaParameterMaps::eL_Maximum, // inclusive
        eConstraintOther = TaParameterMaps::eL_Other, // for the user's own purposes
    };
    using Name = TaParameterMaps::Name;
    using GroupMap = TuMap<CString, TaParameterSet>;

    TaParameterSet() = default;
    /// Deep. The source may be a group of the target.
    TaParameterSet(const TaParameterSet& other);
    TaParameterSet& operator=(const TaParameterSet& other);
    /// What was moved from is empty.
    TaParameterSet(TaParameterSet&& other) noexcept = default;
    TaParameterSet& operator=(TaParameterSet&& other) noexcept;
    ~TaParameterSet() = default;

    /// Removes everything, limits and groups included.
    void ResetAll();

    int HasParameter(Name name) const { return m_maps.GetParameters().Contains(name); }
    /// Stores a copy, of whatever kind an earlier value was. TuException for a value that is not in
    /// its limits.
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
    /// Leaves limits and extensions of that name alone.
    void DeleteParameter(Name name) { m_maps.GetParameters().RemoveKey(name); }
    /// Fills `keys` with all names, sorted by UTF-16 unit.
    void GetParameterKeys(TuArrayManaged<CString>& keys) const
    {
        TaParameterMaps::GetSortedKeys(GetParameters(), keys);
    }
    /// A value that is changed by way of the map is not held against its limits.
    TaParameterMaps::ValueMap& GetParameters() { return m_maps.GetParameters(); }
    const TaParameterMaps::ValueMap& GetParameters() const { return m_maps.GetParameters(); }

    /// The value that is there may lie beyond: only SetParameter looks.
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
    /// Whether the value is neither less than the minimum nor greater than the maximum, where there
    /// are such, in the order of TuVariant.
    int IsInLimits(Name name, const TuVariant& value) const
    {
        return m_maps.IsInLimits(name, value);
    }

    void SetExtension(Name name, const CString& text) { m_maps.GetExtensions().SetAt(name, text); }
    int HasExtension(Name name) const { return m_maps.GetExtensions().Contains(name); }
    /// Empty where there is none.
    CString GetExtension(Name name) const { return m_maps.GetExtension(name); }

    /// The group of that name, made where there is none yet.
    TaParameterSet& AddGroup(Name name) { return m_groups[name]; }
    int IsGroup(Name name) const { return m_groups.Contains(name); }
    int HasGroups() const { return !m_groups.IsEmpty(); }
    /// TuExceptionPreconditionViolation where there is none: ask IsGroup before.
    TaParameterSet& GetGroup(Name name) { return m_groups.GetAt(name); }
    const TaParameterSet& GetGroup(Name name) const { return m_groups.GetAt(name); }
    void RemoveGroup(Name name) { m_groups.RemoveKey(name); }
    void RemoveGroups() { m_groups.RemoveAll(); }
    void GetGroupNames(TuArrayManaged<CString>& names) const
    {
        TaParameterMaps::GetSortedKeys(m_groups, names);
    }
    GroupMap& GetGroups() { return m_groups; }
    const GroupMap& GetGroups() const { return m_groups; }

    /// The values alone: limits, extensions and groups belong to the code that declares them. Two
    /// versions 0, the number of values, name and value of each in the order of iteration.
    void Serialize(TuStreamWriteBinary& stream) const { m_maps.Serialize(stream); }
    /// The same, sorted by name: equal values give equal bytes.
    void SerializeSorted(TuStreamWriteBinary& stream) const { m_maps.SerializeSorted(stream); }
    /// Reads either, in place of the values that are there, limits or not. Of a name that is stored
    /// twice the last value counts.
    void Serialize(TuStreamReadBinary& stream) { m_maps.Serialize(stream); }

private:
    TaParameterMaps m_maps;
    GroupMap m_groups;
};
