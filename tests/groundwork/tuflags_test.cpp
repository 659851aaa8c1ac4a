#include "groundwork/tuflags.h"

#include <gtest/gtest.h>

namespace {

enum EColor
{
    eC_Red = 1,
    eC_Green = 2,
    eC_Top = 1 << 30,
};

TEST(TuFlagsTest, AllOrOneOfSeveralFlagsAreAskedFor)
{
    TuFlags<EColor> flags(eC_Red);
    flags.Add(TuFlags(eC_Green) | eC_Top);
    flags.Remove(TuFlags(eC_Red) | eC_Top);
    EXPECT_EQ(flags, eC_Green);
    EXPECT_FALSE(flags.IsSet(TuFlags(eC_Red) | eC_Green));
    EXPECT_TRUE(flags.IsOneSet(TuFlags(eC_Red) | eC_Green));
    EXPECT_TRUE(flags.IsSet({}) && !flags.IsOneSet({})); // none
}

} // namespace
