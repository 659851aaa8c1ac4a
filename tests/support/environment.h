#pragma once

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

/// What differs between systems for a test: variables of the environment, links, devices.

inline void SetEnvironment(const char* name, const std::string& value)
{
#if defined(_WIN32)
    _putenv_s(name, value.c_str());
#else
    setenv(name, value.c_str(), 1);
#endif
}

/// Makes a symbolic link. False where the system, or the user's rights, do not allow any; a test
/// that is about links is then skipped.
[[nodiscard]] inline bool MakeLink(
    const std::filesystem::path& target, const std::filesystem::path& link)
{
    std::error_code failure;
    std::filesystem::create_symlink(target, link, failure);
    return !failure;
}
