#include "tabase/tauniqueid.h"

#include "groundwork/tucriticalsection.h"
#include "groundwork/tuexception.h"

#include <cstdio>
#include <stdexcept>
#include <utility>

namespace {

constexpr char16_t kSource[] = u"core/talibraries/tabase/tauniqueid";

// The lines of the contract; they never move.
constexpr unsigned int kLineNoIdentifier = 97;
constexpr unsigned int kLineNoText = 377;
constexpr unsigned int kLineNoTestIdentifier = 425;

/// What all identifiers share.
struct SShared
{
    TuCriticalSection lock; // also held while a text is made that several threads may ask for
    std::uint32_t testCount TU_GUARDED_BY(lock) = 0;
    std::atomic<bool> isTestMode{ false }; // a switch by itself: nothing is read on its word
};

SShared& getShared()
{
    // Never destroyed: what runs at the exit of the process may still ask for identifiers.
    static SShared& s_shared = *new SShared;
    return s_shared;
}

/// The optional itself is handed on: a copy of what is in it would wait for all its parts.
std::optional<platform::Uuid> parse(const String& text, unsigned int lineOfFailure)
{
    std::optional<platform::Uuid> uuid = platform::ParseUuid(text);
    if (!uuid) {
        const String shown = text.Left(platform::kUuidTextLength + 1);
        throw TuException(kSource, lineOfFailure,
            std::invalid_argument("\"" + shown.ToUtf8() + "\" is no identifier"));
    }
    return uuid;
}

String format(const platform::Uuid& uuid)
{
    std::optional<std::u16string> text = platform::FormatUuid(uuid);
    if (!text) {
        throw TuException(kSource, kLineNoText);
    }
    return std::move(*text);
}

platform::Uuid createForTest(SShared& shared)
{
    std::uint32_t count = 0;
    {
        const TuCriticalSectionAuto guard(shared.lock);
        count = shared.testCount++;
    }
    char text[platform::kUuidTextLength + 1];
    std::snprintf(text, sizeof(text), "7E57DA7A-1234-1234-1234-%08x", count);
    return *parse(String::FromUtf8(text), kLineNoTestIdentifier);
}

platform::Uuid create()
{
    SShared& shared = getShared();
    if (shared.isTestMode) {
        return createForTest(shared);
    }
    const std::optional<platform::Uuid> uuid = platform::CreateUuid();
    if (!uuid) {
        throw TuException(TU_HERE, std::runtime_error("the system makes no new identifier"));
    }
    return *uuid;
}

/// Eight bytes as one number, the lowest byte first on every processor.
std::uint64_t loadLittleEndian(const std::uint8_t (&bytes)[8])
{
    std::uint64_t number = 0;
    for (std::size_t i = 0; i < sizeof(bytes); ++i) {
        number |= std::uint64_t{ bytes[i] } << 8 * i;
    }
    return number;
}

} // namespace

TaUniqueID::TaUniqueID()
    : m_uuid(create())
{
}

TaUniqueID::TaUniqueID(const TaUniqueID& other)
    : m_uuid(other.m_uuid)
{
    // Another thread may be making the text at this moment: then this makes its own.
    if (other.m_isTextReady.load(std::memory_order_acquire)) {
        m_text = other.m_text;
        m_isTextReady.store(true, std::memory_order_relaxed);
    }
}

TaUniqueID& TaUniqueID::operator=(const TaUniqueID& other)
{
    if (!other.m_isTextReady.load(std::memory_order_acquire)) {
        return *this = other.m_uuid;
    }
    m_text = other.m_text; // the only step that can fail
    m_isTextReady.store(true, std::memory_order_relaxed);
    m_uuid = other.m_uuid;
    return *this;
}

TaUniqueID::TaUniqueID(TaUniqueID&& other) noexcept
    : m_uuid(other.m_uuid)
    , m_text(std::move(other.m_text))
    , m_isTextReady(other.m_isTextReady.exchange(false, std::memory_order_relaxed))
{
}

TaUniqueID& TaUniqueID::operator=(TaUniqueID&& other) noexcept
{
    if (this != &other) {
        m_uuid = other.m_uuid;
        m_text = std::move(other.m_text);
        m_isTextReady.store(other.m_isTextReady.exchange(false, std::memory_order_relaxed),
            std::memory_order_relaxed);
    }
    return *this;
}

TaUniqueID& TaUniqueID::operator=(const UUID& uuid) noexcept
{
    m_uuid = uuid;
    m_isTextReady.store(false, std::memory_order_relaxed);
    m_text.Empty();
    return *this;
}

TaUniqueID::TaUniqueID(const String& text)
    : TaUniqueID(*parse(text, kLineNoIdentifier), text)
{
}

TaUniqueID::TaUniqueID(const UUID& uuid, const String& text)
    : m_uuid(uuid)
    , m_text(text)
    , m_isTextReady(true)
{
}

TaUniqueID& TaUniqueID::operator=(const String& text)
{
    const std::optional<UUID> uuid = parse(text, kLineNoIdentifier);
    m_text = text;
    m_isTextReady.store(true, std::memory_order_relaxed);
    m_uuid = *uuid;
    return *this;
}

void TaUniqueID::Renew() { *this = create(); }

void TaUniqueID::Invalidate() { *this = GetInvalidID(); }

void TaUniqueID::Serialize(TuStreamWrite& stream) const
{
    stream << m_uuid.Data1 << m_uuid.Data2 << m_uuid.Data3;
    for (const std::uint8_t byte : m_uuid.Data4) {
        stream << byte;
    }
}

void TaUniqueID::Serialize(TuStreamRead& stream)
{
    UUID uuid;
    stream >> uuid.Data1 >> uuid.Data2 >> uuid.Data3;
    for (std::uint8_t& byte : uuid.Data4) {
        stream >> byte;
    }
    *this = uuid;
}

TaUniqueID::operator const String&() const
{
    if (!m_isTextReady.load(std::memory_order_acquire)) {
        makeText();
    }
    return m_text;
}

void TaUniqueID::makeText() const
{
    const TuCriticalSectionAuto guard(getShared().lock);
    if (!m_isTextReady.load(std::memory_order_relaxed)) { // by now
        m_text = format(m_uuid);
        m_isTextReady.store(true, std::memory_order_release);
    }
}

String TaUniqueID::GetUniqueID() { return format(create()); }

String TaUniqueID::GetUniqueID(const UUID& uuid) { return format(uuid); }

const TaUniqueID& TaUniqueID::GetInvalidID()
{
    // Never destroyed: what runs at the exit of the process may still look whether an id is valid.
    static const TaUniqueID& s_invalid
        = *new TaUniqueID(platform::GetNilUuid(), u"00000000-0000-0000-0000-000000000000");
    return s_invalid;
}

void TaUniqueID::EnableTestMode(bool enable) { getShared().isTestMode = enable; }

std::weak_ordering TaUniqueID::compare(const UUID& a, const UUID& b) noexcept
{
    if (const auto order = a.Data1 <=> b.Data1; order != 0) {
        return order;
    }
    if (const auto order = a.Data2 <=> b.Data2; order != 0) {
        return order;
    }
    // Not Data3: see the class.
    return loadLittleEndian(a.Data4) <=> loadLittleEndian(b.Data4);
}
