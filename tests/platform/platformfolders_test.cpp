#include "platform/platformfolders.h"

#include "platform/platformfile.h"
#include "platform/platformtext.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

namespace {

/// Sets an environment variable for one test.
class Environment
{
public:
    Environment(const char* name, const char* value)
        : m_name(name)
    {
        if (const char* former = std::getenv(name)) {
            m_former = former;
        }
        setenv(name, value, 1);
    }
    ~Environment()
    {
        if (m_former) {
            setenv(m_name, m_former->c_str(), 1);
        } else {
            unsetenv(m_name);
        }
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    const char* m_name;
    std::optional<std::string> m_former;
};

TEST(PlatformFoldersTest, FollowsTheEnvironmentWhereItNamesAnAbsolutePath)
{
    const Environment home("HOME", "/home/somebody");
    const Environment config("XDG_CONFIG_HOME", "/settings/");
    EXPECT_EQ(platform::GetUserConfigFolder(), u"/settings");
    const Environment relative("XDG_CONFIG_HOME", "settings");
    EXPECT_EQ(platform::GetUserConfigFolder(), u"/home/somebody/.config");
    const Environment temporary("TMPDIR", "/scratch");
    EXPECT_EQ(platform::GetTemporaryFolder(), u"/scratch");
}

TEST(PlatformFoldersTest, KnowsTheRunningProgram)
{
    const std::filesystem::path program = platform::GetProgramPath();
    EXPECT_TRUE(program.is_absolute());
    EXPECT_TRUE(std::filesystem::exists(program));
    EXPECT_EQ(program.stem(), "platform_tests");
}

} // namespace
