#include "platform/platformlibrary.h"

#include "platform/platformtext.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

using Function = int (*)();

TEST(PlatformLibraryTest, FindsFunctionsByNameAndByOrdinal)
{
    platform::SharedLibrary library;
    ASSERT_TRUE(library.Load(platform::FromUtf8(TA_TEST_LIBRARY)));
    const auto byName = reinterpret_cast<Function>(library.FindFunction("TellSeven"));
    const auto byOrdinal = reinterpret_cast<Function>(library.FindFunction(3));
    ASSERT_NE(byName, nullptr);
    ASSERT_NE(byOrdinal, nullptr);
    EXPECT_EQ(byName(), 7);
    EXPECT_EQ(byOrdinal(), 33);
    EXPECT_EQ(library.FindFunction("TellNothing"), nullptr);
    EXPECT_EQ(library.FindFunction(99), nullptr);

    platform::SharedLibrary moved = std::move(library);
    EXPECT_NE(moved.FindFunction("TellSeven"), nullptr);
    moved.Unload();
    EXPECT_FALSE(moved.IsLoaded());
    EXPECT_EQ(moved.FindFunction("TellSeven"), nullptr);
    EXPECT_FALSE(moved.Load(u"/no/such/library"));
}

} // namespace
