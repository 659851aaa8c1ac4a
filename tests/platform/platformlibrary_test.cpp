#include "platform/platformlibrary.h"

#include "platform/platformtext.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

TEST(PlatformLibraryTest, FindsFunctionsByNameAndByOrdinal)
{
    platform::SharedLibrary library;
    ASSERT_TRUE(library.Load(platform::FromUtf8(TA_TEST_LIBRARY)));
    const platform::SharedLibrary moved = std::move(library);
    const auto call = [](void* function) {
        return function != nullptr ? reinterpret_cast<int (*)()>(function)() : 0;
    };
    EXPECT_EQ(call(moved.FindFunction("TellSeven")), 7);
    EXPECT_EQ(call(moved.FindFunction(3)), 33);
    EXPECT_EQ(moved.FindFunction("TellNothing"), nullptr);
    EXPECT_EQ(moved.FindFunction(99), nullptr);
    EXPECT_FALSE(library.IsLoaded()); // NOLINT(bugprone-use-after-move): empty after a move
    EXPECT_EQ(library.FindFunction("TellSeven"), nullptr);
    EXPECT_FALSE(library.Load(u"/no/such/library"));
}

} // namespace
