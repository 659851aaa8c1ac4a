#include "platform/platformfolders.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

TEST(PlatformFoldersTest, FollowTheEnvironmentWhereItNamesAnAbsolutePath)
{
    setenv("HOME", "/home/somebody", 1);
    setenv("XDG_CONFIG_HOME", "/settings/", 1);
    EXPECT_EQ(platform::GetUserConfigFolder(), u"/settings");
    setenv("XDG_CONFIG_HOME", "settings", 1);
    EXPECT_EQ(platform::GetUserConfigFolder(), u"/home/somebody/.config");

    // Other tests of this program need the folder for temporary files.
    const std::string former = std::filesystem::temp_directory_path().string();
    setenv("TMPDIR", "/scratch", 1);
    EXPECT_EQ(platform::GetTemporaryFolder(), u"/scratch");
    setenv("TMPDIR", former.c_str(), 1);

    const std::filesystem::path program = platform::GetProgramPath();
    EXPECT_TRUE(program.is_absolute());
    EXPECT_EQ(program.stem(), "platform_tests");
}

} // namespace
