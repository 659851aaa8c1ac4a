#include "platform/platformfolders.h"

#include "platform/platformtext.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace platform {
namespace {

    /// The value of an environment variable that names an absolute path, else "". A relative path
    /// would mean another folder after every change of the working directory.
    std::string absoluteFromEnvironment(const char* name)
    {
        const char* value = std::getenv(name);
        std::string path = value != nullptr && value[0] == '/' ? value : "";
        while (path.size() > 1 && path.back() == '/') {
            path.pop_back();
        }
        return path;
    }

    std::string homeFolder()
    {
        std::string home = absoluteFromEnvironment("HOME");
        if (home.empty()) {
            passwd user{};
            passwd* found = nullptr;
            char texts[4096];
            getpwuid_r(getuid(), &user, texts, sizeof(texts), &found);
            home = found != nullptr ? user.pw_dir : "/";
        }
        return home;
    }

} // namespace

std::u16string GetTemporaryFolder()
{
    const std::string folder = absoluteFromEnvironment("TMPDIR");
    return FromUtf8(folder.empty() ? "/tmp" : folder);
}

std::u16string GetUserConfigFolder()
{
    const std::string folder = absoluteFromEnvironment("XDG_CONFIG_HOME");
    return FromUtf8(folder.empty() ? homeFolder() + "/.config" : folder);
}

std::u16string GetProgramPath()
{
    std::error_code ignored;
    return FromUtf8(std::filesystem::read_symlink("/proc/self/exe", ignored).string());
}

char16_t GetPathSeparator() { return u'/'; }

std::u16string ToSystemPath(std::u16string_view path)
{
    std::u16string text(path);
    std::ranges::replace(text, u'\\', u'/');
    return text;
}

} // namespace platform
