#include "tabase/taunionfind.h"

#include "support/expectfailure.h"

#include <gtest/gtest.h>

namespace {

/// Shows what a derived class can do.
class CollapsingSets : public TaUnionFind
{
public:
    using TaUnionFind::collapsePath;
    using TaUnionFind::TaUnionFind;
};

TEST(TaUnionFindTest, InitElementsStartsAnew)
{
    TaUnionFind sets(3);
    sets.AddPair(0, 2);
    sets.CreateSetNumbers();
    sets.InitElements(5);
    EXPECT_EQ(sets.GetCount(), 5u);
    EXPECT_EQ(sets.GetRoot(2), 2u);
    if (sizeof(unsigned long) > sizeof(std::uint32_t)) {
        // Entries have 32 bits.
        ExpectFailure<TuExceptionPreconditionViolation>([&] { sets.InitElements(~0ul); });
        EXPECT_EQ(sets.GetCount(), 5u);
    }
    EXPECT_EQ(TaUnionFind().CreateSetNumbers(), 0u);
}

TEST(TaUnionFindTest, CollapsePathPointsAWholePathToOneElement)
{
    CollapsingSets sets(6);
    sets.AddPair(4, 5); // 5 -> 4
    sets.AddPair(3, 4); // 4 -> 3
    sets.collapsePath(5, 1);
    for (const unsigned long element : { 3ul, 4ul, 5ul }) {
        EXPECT_EQ(sets.GetSetNumber(element), 1u); // directly
    }
    EXPECT_EQ(sets.GetRoot(2), 2u);
}

#if !defined(NDEBUG)
TEST(TaUnionFindTest, AssertsThatNumberedSetsAreNotMerged)
{
    static int s_reports = 0;
    const TuAssertHandler former = TuSetAssertHandler([](auto...) { ++s_reports; });
    TaUnionFind sets(2);
    sets.CreateSetNumbers();
    sets.AddPair(0, 1);
    TuSetAssertHandler(former);
    EXPECT_EQ(s_reports, 1);
}
#endif

} // namespace
