#include "platform/platformerror.h"

#include "groundwork/tulatesterror.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <system_error>
#include <thread>

namespace {

TEST(PlatformErrorTest, TheLatestErrorIsThatOfItsThread)
{
    platform::SetLastSystemError(ENOENT);
    std::jthread([] { platform::SetLastSystemError(EACCES); }).join();
    const TuLatestError error;
    platform::SetLastSystemError(EACCES);
    EXPECT_EQ(error.GetNumber(), static_cast<unsigned int>(ENOENT));
    EXPECT_EQ(error.GetMessageText().ToUtf8(), std::generic_category().message(ENOENT));
}

} // namespace
