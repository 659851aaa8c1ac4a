#pragma once

#include "platform/platformapi.h"

#include <bit>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace platform {

/// A universally unique identifier: 128 bits in the members that Windows gives them. The numbers
/// are the text's groups in order; Data4 is the last two groups, byte by byte.
struct Uuid
{
    std::uint32_t Data1 = 0;
    std::uint16_t Data2 = 0;
    std::uint16_t Data3 = 0;
    std::uint8_t Data4[8] = {};

    bool operator==(const Uuid&) const = default;
};

/// A system's own type of the same members: the one that windows.h declares.
template <class T>
concept SystemUuid
    = !std::same_as<T, Uuid> && std::is_trivially_copyable_v<T> && sizeof(T) == sizeof(Uuid)
    && requires(const T& uuid)
{
    requires sizeof(uuid.Data1) == sizeof(Uuid::Data1);
    requires sizeof(uuid.Data2) == sizeof(Uuid::Data2);
    requires sizeof(uuid.Data3) == sizeof(Uuid::Data3);
    requires sizeof(uuid.Data4) == sizeof(Uuid::Data4);
};

template <SystemUuid System> Uuid FromSystemUuid(const System& uuid)
{
    return std::bit_cast<Uuid>(uuid);
}
template <SystemUuid System> System ToSystemUuid(const Uuid& uuid)
{
    return std::bit_cast<System>(uuid);
}

/// Groups of 8, 4, 4, 4 and 12 hexadecimal digits with hyphens between them.
constexpr std::size_t kUuidTextLength = 36;

/// A new one of random bits (version 4). On POSIX the bits come from the kernel, for many
/// identifiers at a time; a forked child never goes on with those of its parent.
/// Threads: any, but not from a signal handler.
/// Failure: nothing where the system makes none; POSIX systems always do.
[[nodiscard]] PLATFORM_API std::optional<Uuid> CreateUuid() noexcept;

/// All bits zero.
[[nodiscard]] PLATFORM_API Uuid GetNilUuid() noexcept;

/// The identifier that a text means, in digits of either case; nothing where it is none. No sign,
/// blank, brace or prefix is taken. On Windows the system parses. Elsewhere the last group may also
/// have just 8 digits: those on its left are then zero.
[[nodiscard]] PLATFORM_API std::optional<Uuid> ParseUuid(std::u16string_view text) noexcept;

/// The text, in capitals; nothing where the system has no memory for it.
[[nodiscard]] PLATFORM_API std::optional<std::u16string> FormatUuid(const Uuid& uuid);

/// The hash that the remote procedure calls of DCE 1.1 define: the same on every system.
[[nodiscard]] PLATFORM_API std::uint16_t HashUuid(const Uuid& uuid) noexcept;

} // namespace platform
