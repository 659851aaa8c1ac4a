#include "platform/platformuuid.h"

#include "platform/win32/platformwindows.h"

#include <rpc.h>

#include <algorithm>
#include <array>

namespace platform {

static_assert(SystemUuid<UUID> && alignof(UUID) == alignof(Uuid));

std::optional<Uuid> CreateUuid() noexcept
{
    UUID created;
    const RPC_STATUS status = ::UuidCreate(&created);
    // "Local only" says that no network card had a part in it; it is as unique.
    if (status != RPC_S_OK && status != RPC_S_UUID_LOCAL_ONLY) {
        return std::nullopt;
    }
    return FromSystemUuid(created);
}

Uuid GetNilUuid() noexcept
{
    UUID nil;
    ::UuidCreateNil(&nil);
    return FromSystemUuid(nil);
}

std::optional<Uuid> ParseUuid(std::u16string_view text) noexcept
{
    // The system wants a terminator. A zero unit inside the text ends it early, and the system
    // refuses what is shorter.
    if (text.size() != kUuidTextLength) {
        return std::nullopt;
    }
    wchar_t terminated[kUuidTextLength + 1] = {};
    std::copy(text.begin(), text.end(), terminated);
    UUID parsed;
    if (::UuidFromStringW(reinterpret_cast<RPC_WSTR>(terminated), &parsed) != RPC_S_OK) {
        return std::nullopt;
    }
    return FromSystemUuid(parsed);
}

std::optional<std::u16string> FormatUuid(const Uuid& uuid)
{
    UUID given = ToSystemUuid<UUID>(uuid);
    RPC_WSTR made = nullptr;
    if (::UuidToStringW(&given, &made) != RPC_S_OK) {
        return std::nullopt;
    }
    std::array<char16_t, kUuidTextLength> text; // on the stack: freeing must not be missed
    std::transform(made, made + text.size(), text.begin(), [](auto unit) {
        return static_cast<char16_t>(unit >= 'a' && unit <= 'f' ? unit - 'a' + 'A' : unit);
    });
    ::RpcStringFreeW(&made);
    return std::u16string(text.begin(), text.end());
}

std::uint16_t HashUuid(const Uuid& uuid) noexcept
{
    UUID given = ToSystemUuid<UUID>(uuid);
    RPC_STATUS status = RPC_S_OK;
    return ::UuidHash(&given, &status);
}

} // namespace platform
