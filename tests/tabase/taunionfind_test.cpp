#include "tabase/taunionfind.h"

#include "support/expectfailure.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

/// Shows what a derived class can do.
class CollapsingSets : public TaUnionFind
{
public:
    using TaUnionFind::collapsePath;
    using TaUnionFind::TaUnionFind;
};

std::vector<unsigned long> getSetNumbers(const TaUnionFind& sets)
{
    std::vector<unsigned long> numbers;
    for (unsigned long element = 0; element < sets.GetCount(); ++element) {
        numbers.push_back(sets.GetSetNumber(element));
    }
    return numbers;
}

TEST(TaUnionFindTest, ElementsWithoutPairsAreSetsOfTheirOwn)
{
    TaUnionFind none;
    EXPECT_EQ(none.GetCount(), 0u);
    EXPECT_EQ(none.CreateSetNumbers(), 0u);

    TaUnionFind sets(4);
    EXPECT_EQ(sets.GetCount(), 4u);
    EXPECT_EQ(sets.CreateSetNumbers(), 4u);
    EXPECT_EQ(getSetNumbers(sets), (std::vector<unsigned long>{ 0, 1, 2, 3 }));
}

TEST(TaUnionFindTest, TheSmallestElementIsTheRootAndOrdersTheNumbers)
{
    TaUnionFind sets(9);
    sets.AddPair(5, 2);
    sets.AddPair(7, 5);
    sets.AddPair(8, 8);
    sets.AddPair(4, 1);
    EXPECT_EQ(sets.GetRoot(7), 2u);
    EXPECT_EQ(sets.GetRoot(8), 8u);

    // Two sets of several elements: the greater root moves, whichever side it is named on.
    sets.AddPair(7, 4);
    EXPECT_EQ(sets.GetRoot(2), 1u);
    sets.AddPair(6, 3);

    EXPECT_EQ(sets.CreateSetNumbers(), 4u); // {0} {1 2 4 5 7} {3 6} {8}
    EXPECT_EQ(getSetNumbers(sets), (std::vector<unsigned long>{ 0, 1, 1, 2, 1, 1, 2, 1, 3 }));
}

TEST(TaUnionFindTest, InitElementsStartsAnewAndCopiesAreIndependent)
{
    TaUnionFind sets(3);
    sets.AddPair(0, 2);
    TaUnionFind copy(sets);
    copy.AddPair(1, 2);
    EXPECT_EQ(sets.GetRoot(1), 1u);
    EXPECT_EQ(copy.GetRoot(1), 0u);

    sets.CreateSetNumbers();
    sets.InitElements(5);
    EXPECT_EQ(sets.GetCount(), 5u);
    EXPECT_EQ(sets.GetRoot(2), 2u);
    sets = copy;
    EXPECT_EQ(sets.CreateSetNumbers(), 1u);
}

TEST(TaUnionFindTest, CollapsePathPointsAWholePathToOneElement)
{
    CollapsingSets sets(6);
    sets.AddPair(4, 5); // 5 -> 4
    sets.AddPair(3, 4); // 4 -> 3
    sets.collapsePath(5, 1);
    EXPECT_EQ(sets.GetRoot(3), 1u);
    EXPECT_EQ(sets.GetRoot(4), 1u);
    EXPECT_EQ(sets.GetRoot(5), 1u);
    EXPECT_EQ(sets.GetSetNumber(5), 1u); // directly
    EXPECT_EQ(sets.GetSetNumber(3), 1u);
    EXPECT_EQ(sets.GetRoot(2), 2u);
}

TEST(TaUnionFindTest, RefusesMoreElementsThanEntriesHaveNumbers)
{
    if (sizeof(unsigned long) > sizeof(std::uint32_t)) {
        TaUnionFind sets;
        ExpectFailure<TuExceptionPreconditionViolation>([&sets] { sets.InitElements(~0ul); });
        EXPECT_EQ(sets.GetCount(), 0u);
    }
}

#if !defined(NDEBUG)
TEST(TaUnionFindTest, AssertsThatNumberedSetsAreNotMerged)
{
    static int s_reports = 0;
    const TuAssertHandler former = TuSetAssertHandler(
        [](const char*, const char*, const char*, unsigned int) { ++s_reports; });
    TaUnionFind sets(2);
    sets.CreateSetNumbers();
    sets.AddPair(0, 1);
    EXPECT_EQ(s_reports, 1);
    static_cast<void>(sets.GetRoot(1));
    EXPECT_EQ(s_reports, 2);
    TuSetAssertHandler(former);
}
#endif

} // namespace
