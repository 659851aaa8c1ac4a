#include "groundwork/tuexceptions.h"
#include "groundwork/tumemory.h"
#include "support/largestblock.h"
#include "tabase/tastreamwritebinarybuffer.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(OutOfMemoryTest, IsToldWhereThereIsNoMemoryForThePlaceEither)
{
#if defined(_WIN32)
    GTEST_SKIP() << "a program's operator new serves that program alone here, not its libraries";
#else
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
#endif
}

TEST(OutOfMemoryTest, ABufferThatCannotDoubleGrowsToWhatIsNeeded)
{
    const TuAllocationHook former
        = TuSetAllocationHook([](std::size_t size) { return size <= 1000; });
    const char bytes[1000] = {};
    TaStreamWriteBinaryBuffer buffer;
    buffer.WriteBuffer(bytes, 600);
    buffer.WriteBuffer(bytes, 400);
    EXPECT_THROW(buffer.WriteBuffer(bytes, 1), TuExceptionOutOfMemory);
    EXPECT_EQ(buffer.GetSize(), 1000u);
    TuSetAllocationHook(former);
}

} // namespace
