#pragma once

#include "platform/platformapi.h"

#include <string>
#include <string_view>

/// Places that the system gives to a program; each path is absolute and ends without a separator
/// (but for the root of a drive).
namespace platform {

PLATFORM_API std::u16string GetTemporaryFolder();
/// Where the user's settings belong: `$XDG_CONFIG_HOME`, or `.config` in the home folder; on
/// Windows the roaming application data.
PLATFORM_API std::u16string GetUserConfigFolder();
/// The file of the running program, empty when the system does not tell.
PLATFORM_API std::u16string GetProgramPath();

/// What stands between the folders of a path.
PLATFORM_API char16_t GetPathSeparator();
/// The path, in which "\\" stands between folders, and "::" within names, as the system takes it:
/// "/" for the former; on Windows "__" for the latter, which it does not allow in names.
PLATFORM_API std::u16string ToSystemPath(std::u16string_view path);

} // namespace platform
