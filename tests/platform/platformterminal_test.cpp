#include "platform/platformterminal.h"

#include "platform/platformfile.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

TEST(PlatformTerminalDeathTest, StandardStreamsThatAreClosedAreNobodysFiles)
{
    TemporaryFolder folder;
    const std::u16string path = folder.GetPath("a.off").u16string();
    EXPECT_EXIT(
        {
            std::fclose(stdout);
            std::fclose(stderr);
            platform::SecureStandardStreams();
            platform::File file;
            const bool opened = file.Open(path, platform::eFM_Write);
            const bool written = platform::WriteStandard(platform::eSS_Output, "figures")
                || platform::WriteStandard(platform::eSS_Error, "progress");
            std::_Exit(opened && !written ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_EQ(folder.ReadAll("a.off"), "");
}

TEST(PlatformTerminalTest, HasAWidthWhereverOutputGoes)
{
    EXPECT_GT(platform::GetTerminalWidth(platform::eSS_Output), 0u);
    EXPECT_TRUE(platform::WriteStandard(platform::eSS_Output, ""));
}

} // namespace
