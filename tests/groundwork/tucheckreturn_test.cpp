#include "groundwork/tucheckreturn.h"

#include "groundwork/tuflags.h"
#include "groundwork/tulatesterror.h"
#include "platform/platformerror.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <utility>

namespace {

int s_complaints = 0;

struct CountingPolicy
{
    static void OnUnread() { ++s_complaints; }
};

using Result = TuCheckReturn<bool, CountingPolicy>;

TEST(TuCheckReturnTest, ComplainsOnceForEachResultThatNobodyLookedAt)
{
    s_complaints = 0;
    {
        const Result read = true;
        EXPECT_TRUE(read);
        const Result marked = false;
        marked.MarkRead();
        const Result copied = true; // the copy takes the duty over, and is looked at
        const Result copy = copied; // NOLINT: the copy is what is tested
        EXPECT_TRUE(copy.GetValue());
    }
    EXPECT_EQ(s_complaints, 0);
    {
        const Result dropped = true;
        Result first = true;
        const Result second = std::move(first);
        Result overwritten = true;
        overwritten = second;
        EXPECT_EQ(s_complaints, 1); // the overwritten one
    }
    EXPECT_EQ(s_complaints, 3);
}

TEST(TuCheckReturnTest, TheUsualPolicyComplainsInDebugBuildsOnly)
{
    static int s_asserted = 0;
    s_asserted = 0;
    const TuAssertHandler former = TuSetAssertHandler(
        [](const char*, const char*, const char*, unsigned int) { ++s_asserted; });
    {
        const TuCheckReturn<bool> dropped = true;
    }
    TuSetAssertHandler(former);
#if defined(NDEBUG)
    EXPECT_EQ(s_asserted, 0);
#else
    EXPECT_EQ(s_asserted, 1);
#endif
}

enum EColour
{
    eC_Red = 1,
    eC_Green = 2,
    eC_Blue = 4,
};

TEST(TuFlagsTest, AsksForAllOrForOneOfTheGivenFlags)
{
    TuFlags<EColour> flags = eC_Red;
    flags.Add(eC_Blue);
    EXPECT_EQ(flags.GetBits(), 5u);
    EXPECT_TRUE(flags.IsSet(TuFlags(eC_Red) | eC_Blue));
    EXPECT_FALSE(flags.IsSet(TuFlags(eC_Red) | eC_Green));
    EXPECT_TRUE(flags.IsOneSet(TuFlags(eC_Red) | eC_Green));
    EXPECT_FALSE(flags.IsOneSet(eC_Green));
    flags.Remove(TuFlags(eC_Red) | eC_Green);
    EXPECT_EQ(flags, TuFlags(eC_Blue));
    flags.Set(eC_Green);
    EXPECT_EQ(flags.GetBits(), 2u);
}

TEST(TuLatestErrorTest, KeepsTheNumberAndTextOfTheFailedCall)
{
    platform::SetLastSystemError(2); // "not found" on both systems
    const TuLatestError error;
    platform::SetLastSystemError(0);
    EXPECT_EQ(error.GetNumber(), 2u);
    EXPECT_FALSE(error.GetMessageText().IsEmpty());
}

TEST(TuCheckReturnTest, IsSilentWhileAnExceptionIsOnItsWay)
{
    s_complaints = 0;
    try {
        const Result unread = true;
        throw std::runtime_error("the greater news");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(s_complaints, 0);
}

} // namespace
