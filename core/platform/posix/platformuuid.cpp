#include "platform/platformuuid.h"

#include <pthread.h>
#include <sys/random.h>
#include <sys/types.h>
#include <uuid/uuid.h>

#include <algorithm>
#include <array>
#include <atomic>

namespace platform {
namespace {

    constexpr std::size_t kBytes = sizeof(uuid_t);
    static_assert(kBytes == sizeof(Uuid));

    /// Counts the forks that lie between this process and the first. A child stores it before
    /// anything else runs in it; takeRandomBytes loads it.
    std::atomic<unsigned int> s_generation{ 0 };

    /// False before this source is initialised, too.
    const bool s_learnsOfForks
        = pthread_atfork(nullptr, nullptr, [] { s_generation.fetch_add(1); }) == 0;

    /// Random bytes that one thread has in store: the kernel is asked for many at a time, because
    /// the way to it costs more than the bytes.
    struct SRandomStore
    {
        // The most that the kernel gives in one piece, whatever signals arrive.
        unsigned char bytes[256];
        std::size_t left; // how many of the first bytes nobody has had yet
        unsigned int generation; // of the process that fetched them
    };
    thread_local SRandomStore t_store{};

    bool takeRandomBytes(uuid_t& bytes)
    {
        SRandomStore& store = t_store;
        const unsigned int generation = s_generation.load();
        if (store.left < kBytes || store.generation != generation) {
            store.left = 0;
            // A store that would outlive a fork unnoticed must not be filled.
            if (!s_learnsOfForks
                || getrandom(store.bytes, sizeof(store.bytes), 0) != ssize_t(sizeof(store.bytes))) {
                return false;
            }
            store.left = sizeof(store.bytes);
            store.generation = generation;
        }
        store.left -= kBytes;
        unsigned char* const taken = store.bytes + store.left;
        std::copy_n(taken, kBytes, bytes);
        std::fill_n(taken, kBytes, static_cast<unsigned char>(0)); // nobody can find it here later
        return true;
    }

    // Texts are handled in fours of digits, of which all their groups consist.

    constexpr char16_t kDigits[] = u"0123456789ABCDEF";
    /// Stays above the 16 bits of four digits, wherever among them it stands.
    constexpr std::uint32_t kNoDigit = 1u << 16;

    /// What a unit means as a digit, by its lower byte.
    constexpr auto kValues = [] {
        std::array<std::uint32_t, 256> values{};
        values.fill(kNoDigit);
        for (std::uint32_t i = 0; i < 16; ++i) {
            values[kDigits[i]] = i;
            values[kDigits[i] | 0x20u] = i; // the small letter; a figure has this bit already
        }
        return values;
    }();

    /// Four digits as a number of 16 bits. Where one is none, `seen` gathers bits above these.
    inline std::uint32_t parseFour(const char16_t* units, std::uint32_t& seen)
    {
        const auto value = [units](int i) { return kValues[units[i] & 0xFFu]; };
        const std::uint32_t number = value(0) << 12 | value(1) << 8 | value(2) << 4 | value(3);
        const std::uint32_t high = (units[0] | units[1] | units[2] | units[3]) >> 8;
        seen |= number | high << 16;
        return number;
    }

    inline void formatFour(char16_t* units, unsigned int number)
    {
        units[0] = kDigits[number >> 12 & 0xF];
        units[1] = kDigits[number >> 8 & 0xF];
        units[2] = kDigits[number >> 4 & 0xF];
        units[3] = kDigits[number & 0xF];
    }

    /// The place of four digits that stand for two bytes of Data4.
    constexpr std::size_t kPlacesOfData4[] = { 19, 24, 28, 32 };

    /// False where the units, kUuidTextLength of them, are no identifier; `uuid` is then anything.
    bool parseGroups(const char16_t* units, Uuid& uuid)
    {
        if (units[8] != u'-' || units[13] != u'-' || units[18] != u'-' || units[23] != u'-') {
            return false;
        }
        std::uint32_t seen = 0;
        uuid.Data1 = parseFour(units, seen) << 16 | parseFour(units + 4, seen);
        uuid.Data2 = static_cast<std::uint16_t>(parseFour(units + 9, seen));
        uuid.Data3 = static_cast<std::uint16_t>(parseFour(units + 14, seen));
        std::uint8_t* byte = uuid.Data4;
        for (const std::size_t place : kPlacesOfData4) {
            const std::uint32_t number = parseFour(units + place, seen);
            *byte++ = static_cast<std::uint8_t>(number >> 8);
            *byte++ = static_cast<std::uint8_t>(number);
        }
        return seen >> 16 == 0;
    }

} // namespace

std::optional<Uuid> CreateUuid() noexcept
{
    uuid_t bytes; // in the order of the text
    if (!takeRandomBytes(bytes)) {
        uuid_generate_random(bytes); // knows other sources, and keeps no store
    }
    Uuid uuid;
    uuid.Data1 = unsigned{ bytes[0] } << 24 | unsigned{ bytes[1] } << 16 | unsigned{ bytes[2] } << 8
        | bytes[3];
    uuid.Data2 = static_cast<std::uint16_t>(bytes[4] << 8 | bytes[5]);
    uuid.Data3 = static_cast<std::uint16_t>(0x4000 | (bytes[6] & 0x0F) << 8 | bytes[7]); // version
    std::copy_n(bytes + 8, sizeof(uuid.Data4), uuid.Data4);
    uuid.Data4[0] = static_cast<std::uint8_t>(0x80 | (bytes[8] & 0x3F)); // variant
    return uuid;
}

Uuid GetNilUuid() noexcept { return {}; }

std::optional<Uuid> ParseUuid(std::u16string_view text) noexcept
{
    constexpr std::size_t kLastGroup = 24;
    std::array<char16_t, kUuidTextLength> filled;
    if (text.size() == kUuidTextLength - 4) {
        const auto next = std::copy_n(text.begin(), kLastGroup, filled.begin());
        std::copy(text.begin() + kLastGroup, text.end(), std::fill_n(next, 4, u'0'));
        text = { filled.data(), filled.size() };
    }
    std::optional<Uuid> uuid; // the one that is returned: a copy would wait for all its parts
    if (text.size() == kUuidTextLength && !parseGroups(text.data(), uuid.emplace())) {
        uuid.reset();
    }
    return uuid;
}

std::optional<std::u16string> FormatUuid(const Uuid& uuid)
{
    std::optional<std::u16string> text(std::in_place, kUuidTextLength, u'-');
    char16_t* const units = text->data();
    formatFour(units, uuid.Data1 >> 16);
    formatFour(units + 4, uuid.Data1);
    formatFour(units + 9, uuid.Data2);
    formatFour(units + 14, uuid.Data3);
    const std::uint8_t* byte = uuid.Data4;
    for (const std::size_t place : kPlacesOfData4) {
        formatFour(units + place, unsigned{ byte[0] } << 8 | byte[1]);
        byte += 2;
    }
    return text;
}

std::uint16_t HashUuid(const Uuid& uuid) noexcept
{
    unsigned char bytes[kBytes]; // in memory as a little-endian processor has them
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[i] = static_cast<unsigned char>(uuid.Data1 >> 8 * i);
    }
    for (std::size_t i = 0; i < 2; ++i) {
        bytes[4 + i] = static_cast<unsigned char>(uuid.Data2 >> 8 * i);
        bytes[6 + i] = static_cast<unsigned char>(uuid.Data3 >> 8 * i);
    }
    std::copy_n(uuid.Data4, sizeof(uuid.Data4), bytes + 8);

    // Two running sums. The definition has 16 bits for each, and the second can pass them.
    std::int16_t sum = 0;
    std::int16_t sums = 0;
    for (const unsigned char byte : bytes) {
        sum = static_cast<std::int16_t>(sum + byte);
        sums = static_cast<std::int16_t>(sums + sum);
    }
    const auto modulo = [](int number) { return (number % 255 + 255) % 255; };
    return static_cast<std::uint16_t>(modulo(sums - sum) * 256 + modulo(-sums));
}

} // namespace platform
