#include "platform/platformterminal.h"

#include "platform/platformfile.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

namespace {

TEST(PlatformTerminalDeathTest, StandardStreamsThatAreClosedAreNobodysFiles)
{
    const TemporaryFolder folder;
    const CString path = folder / "a.off";
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
    EXPECT_GT(platform::GetTerminalWidth(platform::eSS_Output), 0u); // wherever output goes
}

} // namespace
