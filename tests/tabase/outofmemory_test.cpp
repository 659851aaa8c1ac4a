#include "groundwork/tuexceptions.h"
#include "largestblock.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(OutOfMemoryTest, IsToldWhereThereIsNoMemoryForThePlaceEither)
{
    const auto accountOf = [](const auto&... place) {
        try {
            s_isMemoryGone = true;
            throw TuExceptionOutOfMemory(place...);
        } catch (const TuException& failure) {
            const TuException kept = failure;
            s_isMemoryGone = false;
            return std::string(kept.what());
        }
    };
    constexpr char kAccount[]
        = "TuExceptionOutOfMemory at unknown(0): no memory was left to say where";
    EXPECT_EQ(accountOf(TU_HERE), kAccount);
    EXPECT_EQ(accountOf(u"core/groundwork/tuplexmanager", 284u), kAccount);
}

} // namespace
