#pragma once

#include "groundwork/groundworkapi.h"

/// A set of flags: the enumerators of `Enum` are bits of 32.
template <class Enum> class GROUNDWORK_TEMPLATE TuFlags
{
    static_assert(sizeof(Enum) <= sizeof(unsigned int), "a set holds 32 flags");

public:
    TuFlags() = default;
    TuFlags(Enum flags) // NOLINT(google-explicit-constructor): one flag is a set of flags
        : m_bits(static_cast<unsigned int>(flags))
    {
    }

    void Set(TuFlags flags) { m_bits = flags.m_bits; }
    void Add(TuFlags flags) { m_bits |= flags.m_bits; }
    void Remove(TuFlags flags) { m_bits &= ~flags.m_bits; }

    /// Whether all of the given flags are set; true for none.
    bool IsSet(TuFlags flags) const { return (m_bits & flags.m_bits) == flags.m_bits; }
    /// Whether at least one of the given flags is set.
    bool IsOneSet(TuFlags flags) const { return (m_bits & flags.m_bits) != 0; }
    unsigned int GetBits() const { return m_bits; }

    static TuFlags FromBits(unsigned int bits)
    {
        TuFlags flags;
        flags.m_bits = bits;
        return flags;
    }
    friend TuFlags operator|(TuFlags a, TuFlags b) { return FromBits(a.m_bits | b.m_bits); }
    friend bool operator==(TuFlags a, TuFlags b) = default;

private:
    unsigned int m_bits = 0;
};
