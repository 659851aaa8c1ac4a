#include "platform/platformfolders.h"

#include "support/environment.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

/// The temporary folder while the environment names `folder`; other tests of this program need the
/// one that was there.
std::u16string temporaryFolderWhen(const char* variable, const std::string& folder)
{
    const std::string former = std::filesystem::temp_directory_path().string();
    SetEnvironment(variable, folder);
    const std::u16string found = platform::GetTemporaryFolder();
    SetEnvironment(variable, former);
    return found;
}

TEST(PlatformFoldersTest, AreAbsoluteAndEndWithoutASeparator)
{
    const std::filesystem::path program = platform::GetProgramPath();
    EXPECT_EQ(program.stem(), "platform_tests");
    for (const std::filesystem::path& path :
        { program, std::filesystem::path(platform::GetUserConfigFolder()),
            std::filesystem::path(platform::GetTemporaryFolder()) }) {
        EXPECT_TRUE(path.is_absolute()) << path;
        EXPECT_TRUE(path.has_filename()) << path;
    }
}

#if defined(_WIN32)

TEST(PlatformFoldersTest, FollowTheEnvironmentAndTheProfile)
{
    EXPECT_EQ(temporaryFolderWhen("TMP", "C:\\scratch\\"), u"C:\\scratch");
    EXPECT_EQ(temporaryFolderWhen("TMP", "C:\\"), u"C:\\"); // "C:" would be another folder
    EXPECT_TRUE(std::filesystem::is_directory(platform::GetUserConfigFolder()));
}

#else

TEST(PlatformFoldersTest, FollowTheEnvironmentWhereItNamesAnAbsolutePath)
{
    SetEnvironment("HOME", "/home/somebody");
    SetEnvironment("XDG_CONFIG_HOME", "/settings/");
    EXPECT_EQ(platform::GetUserConfigFolder(), u"/settings");
    SetEnvironment("XDG_CONFIG_HOME", "settings");
    EXPECT_EQ(platform::GetUserConfigFolder(), u"/home/somebody/.config");
    EXPECT_EQ(temporaryFolderWhen("TMPDIR", "/scratch"), u"/scratch");
}

#endif

} // namespace
