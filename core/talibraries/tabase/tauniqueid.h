#pragma once

#include "groundwork/cstring.h"
#include "groundwork/tuhashkey.h"
#include "groundwork/tustreamread.h"
#include "groundwork/tustreamwrite.h"
#include "platform/platformuuid.h"
#include "tabase/tabaseapi.h"

#include <atomic>
#include <compare>
#include <cstdint>

/// A universally unique identifier: 128 bits that nobody else has, and their text.
///
/// Use it to name what is kept in several files or processes. A new one is random; in test mode
/// new ones come from a counter instead, so that a run can be repeated.
///
/// Each identifier keeps its text. One that was made from a text keeps that text as it was; any
/// other makes it when it is first asked for, in capitals. Equality looks at all bits and never at
/// the text. The order is an old one that sorted collections are stored by, and passes over Data3
/// on purpose: of two identifiers that differ only there neither is less, and yet they are not
/// equal. Ordered standard containers would take them for one; TuMap and TuSet do not.
///
/// Threads: as a standard string: many readers, or one writer. Threads that ask for the text of one
///          identifier, or copy it, are readers: the text is made once.
/// Failure: TuException. A text that is no identifier is refused (ParseUuid says which are), and
///          leaves the object unchanged, as every failure does.
class TABASE_API TaUniqueID
{
public:
    /// The bare 128 bits. On Windows, the system's type of this name is taken and given, too.
    using UUID = platform::Uuid;

    /// A new identifier, as Renew makes it.
    TaUniqueID();
    TaUniqueID(const TaUniqueID& other);
    TaUniqueID& operator=(const TaUniqueID& other);
    /// What was moved from keeps its bits, but may make its text anew.
    TaUniqueID(TaUniqueID&& other) noexcept;
    TaUniqueID& operator=(TaUniqueID&& other) noexcept;
    ~TaUniqueID() = default;

    explicit TaUniqueID(const UUID& uuid) noexcept
        : m_uuid(uuid)
    {
    }
    TaUniqueID& operator=(const UUID& uuid) noexcept;
    template <platform::SystemUuid System>
    explicit TaUniqueID(const System& uuid) noexcept
        : TaUniqueID(platform::FromSystemUuid(uuid))
    {
    }
    template <platform::SystemUuid System> TaUniqueID& operator=(const System& uuid) noexcept
    {
        return *this = platform::FromSystemUuid(uuid);
    }

    explicit TaUniqueID(const String& text);
    TaUniqueID& operator=(const String& text);

    /// Makes this a new identifier.
    void Renew();
    /// Makes this the invalid identifier.
    void Invalidate();

    void Serialize(TuStreamWrite& stream) const;
    void Serialize(TuStreamRead& stream);

    /// The text; valid until the identifier changes.
    operator const String&() const; // NOLINT(google-explicit-constructor): it is its text
    operator const UUID&() const noexcept { return m_uuid; } // NOLINT(google-explicit-constructor)
    template <platform::SystemUuid System>
    operator System() const noexcept // NOLINT(google-explicit-constructor)
    {
        return platform::ToSystemUuid<System>(m_uuid);
    }

    bool IsValid() const { return !IsInvalid(); }
    bool IsInvalid() const { return *this == GetInvalidID(); }

    /// The text of a new identifier.
    static String GetUniqueID();
    static String GetUniqueID(const TaUniqueID& id) { return id; }
    static String GetUniqueID(const UUID& uuid);
    template <platform::SystemUuid System> static String GetUniqueID(const System& uuid)
    {
        return GetUniqueID(platform::FromSystemUuid(uuid));
    }
    /// All bits zero: never that of a new identifier.
    static const TaUniqueID& GetInvalidID();

    /// New identifiers are then 7E57DA7A-1234-1234-1234-0000NNNNNNNN, with a number that counts
    /// from 0 through the whole process, whether the mode is left in between or not. They come from
    /// a text with a last group of eight digits: where the system takes no such text (on Windows),
    /// each is a TuException, and counts all the same.
    static void EnableTestMode(bool enable);

    friend bool operator==(const TaUniqueID& a, const TaUniqueID& b)
    {
        return a.m_uuid == b.m_uuid;
    }
    friend bool operator==(const TaUniqueID& a, const UUID& b) { return a.m_uuid == b; }
    template <platform::SystemUuid System>
    friend bool operator==(const TaUniqueID& a, const System& b)
    {
        return a.m_uuid == platform::FromSystemUuid(b);
    }
    friend std::weak_ordering operator<=>(const TaUniqueID& a, const TaUniqueID& b)
    {
        return compare(a.m_uuid, b.m_uuid);
    }
    friend std::weak_ordering operator<=>(const TaUniqueID& a, const UUID& b)
    {
        return compare(a.m_uuid, b);
    }
    template <platform::SystemUuid System>
    friend std::weak_ordering operator<=>(const TaUniqueID& a, const System& b)
    {
        return compare(a.m_uuid, platform::FromSystemUuid(b));
    }

private:
    TaUniqueID(const UUID& uuid, const String& text);

    static std::weak_ordering compare(const UUID& a, const UUID& b) noexcept;
    void makeText() const;

    UUID m_uuid;
    mutable String m_text; // as long as it is not ready, one thread may be making it
    /// Stored when the text is there, with release; whoever loads true, with acquire, may read it.
    mutable std::atomic<bool> m_isTextReady{ false };
};

/// All four members count, as for equality.
template <> struct TuHashKey<TaUniqueID>
{
    static std::uint32_t Compute(const TaUniqueID& key) { return platform::HashUuid(key); }
};
