#pragma once

#include "platform/platformapi.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// The registry: small values that outlive the program, each under a root, a key and a name.
///
/// On Windows it is the system's own. Elsewhere each root is a tree by itself, kept in one of two
/// files: `user.registry` in the folder `tabase` of the user's configuration (eRo_CurrentUser and
/// eRo_Users), and `machine.registry` in `/etc/tabase` (the others). The environment variable
/// TABASE_REGISTRY_FOLDER names another folder for both, by an absolute path.
///
/// A key is a path of parts, with "\" between them and none in front; empty parts are passed over,
/// so "" is the root itself. Keys and names ignore case, but keep the spelling in which they were
/// first written; a text ends at its first zero unit. A key exists once it, or anything below it,
/// was written. A part has at most 255 units, a name 16383.
///
/// Threads: any thread may call anything. Several processes may, too: a reader finds all of a
///          value, old or new, and a write that has returned true survives a crash, on Windows
///          within what the system promises of its registry.
/// Failure: false; then no value has changed. For a root that is none of the five, always.
///          docs/options.md says more, also of files that cannot be read.
namespace platform {

/// Any other number is no root.
enum ERegistryRoot : int
{
    eRo_ClassesRoot = 0,
    eRo_CurrentUser = 1,
    eRo_LocalMachine = 2,
    eRo_Users = 3,
    eRo_CurrentConfig = 4,
};

/// The registry's own numbers; any other may be written, too.
enum ERegistryType : unsigned int
{
    eRT_Text = 1, // UTF-16
    eRT_Number = 4, // 32 bits
};

/// Reads the bytes of a value, whatever its type, which `type`, where it is not null, receives.
/// False where there is no such value, or it has more than `maxBytes`; `data` is then of no
/// meaning. Creates nothing.
[[nodiscard]] PLATFORM_API bool ReadRegistry(ERegistryRoot root, std::u16string_view key,
    std::u16string_view name, std::size_t maxBytes, std::vector<unsigned char>& data,
    ERegistryType* type = nullptr);

/// Writes a value, and the key where it is missing, with all keys above it.
[[nodiscard]] PLATFORM_API bool WriteRegistry(ERegistryRoot root, std::u16string_view key,
    std::u16string_view name, ERegistryType type, const void* data, std::size_t size);

struct SRegistryValue
{
    std::u16string name;
    ERegistryType type{};
    std::vector<unsigned char> data;
};

/// The keys directly below `key`, sorted by code unit. False where there is no such key; a root is
/// always there.
[[nodiscard]] PLATFORM_API bool ListRegistryKeys(
    ERegistryRoot root, std::u16string_view key, std::vector<std::u16string>& names);
/// The values of `key`, sorted by the code units of their names.
[[nodiscard]] PLATFORM_API bool ListRegistryValues(
    ERegistryRoot root, std::u16string_view key, std::vector<SRegistryValue>& values);

/// Removes a key with all that is below it. False for a root: nobody means all of it.
[[nodiscard]] PLATFORM_API bool RemoveRegistryKey(ERegistryRoot root, std::u16string_view key);

/// Hears what nobody has asked for but somebody should know: that a file was set aside, say. Called
/// on the thread that found out, with no lock held; must not throw.
using RegistryReport = void (*)(std::u16string_view text);

/// Lets `report` hear what is to be told from now on, and returns who has until now. At first it
/// goes to WriteTrace.
PLATFORM_API RegistryReport SetRegistryReport(RegistryReport report);

} // namespace platform
