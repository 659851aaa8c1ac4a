#include "groundwork/tulist.h"

#include "groundwork/cstring.h"
#include "groundwork/tulistsorted.h"
#include "groundwork/tuscopedpointer.h"
#include "support/expectfailure.h"
#include "support/memorystreams.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

namespace {

using Texts = TuList<CString>;

static_assert(std::bidirectional_iterator<Texts::iterator>);
static_assert(std::is_same_v<TuList<int, 1>::iterator::reference, const int&>);
static_assert(std::is_convertible_v<Texts::iterator, Texts::const_iterator>);
static_assert(!std::is_convertible_v<Texts::const_iterator, Texts::iterator>);

TEST(TuListTest, ElementsStayWhereTheyAreWhileOthersComeAndGo)
{
    Texts list{ u"b", u"d" };
    const CString* const kept = &list.GetHead();
    list.InsertAfter(list.Find(u"d"), u"e");
    EXPECT_EQ(list.RemoveTail(), u"e");
    EXPECT_TRUE(list.Remove(u"d"));
    EXPECT_FALSE(list.Remove(u"d"));
    EXPECT_EQ(kept, &list.GetHead());
    list.RemoveHead();
    ExpectFailure<TuExceptionPreconditionViolation>([&] { list.GetHead(); });
    ExpectFailure<TuExceptionPreconditionViolation>([&] { list.RemoveTail(); });
}

TEST(TuListTest, TakesElementsThatCanOnlyBeMoved)
{
    TuList<TuScopedPointer<int>> list;
    list.Emplace(new int(1));
    list.AddHead(list.RemoveTail());
    EXPECT_EQ(*TuList(std::move(list)).GetHead(), 1);
}

TEST(TuListTest, SortKeepsEqualElementsInOrderAndStopsAfterAPassWithoutASwap)
{
    Texts list{ u"bb", u"ca", u"ab", u"cb", u"aa", u"ba" };
    const auto ca = list.Find(u"ca");
    int asked = 0;
    const auto byFirst = [&](const CString& a, const CString& b) { return ++asked, a[0] < b[0]; };
    list.Sort(byFirst);
    EXPECT_EQ(list, (Texts{ u"ab", u"aa", u"bb", u"ba", u"ca", u"cb" }));
    EXPECT_EQ(*ca, u"ca"); // iterators move with their elements
    asked = 0;
    list.Sort(byFirst);
    EXPECT_EQ(asked, 5);
}

TEST(TuListSortedTest, ARecordInTheWrongOrderIsReadIntoOrderInTime)
{
    constexpr unsigned int kElements = 200'000; // one by one, the time limit would not do
    const auto bytes = WriteToBytes([&](auto& stream) {
        stream << 0u << kElements;
        for (unsigned int i = kElements; i != 0; --i) {
            stream << i;
        }
    });
    // The last digit does not count: it shows whether equal elements keep their order.
    auto byTens = [](unsigned int a, unsigned int b) { return a / 10 < b / 10; };
    TuListSorted<unsigned int, 17, unsigned int, decltype(byTens)> list(byTens);
    list.Add(1);
    ReadFromBytes(bytes, [&](auto& stream) { list.Serialize(stream); });
    EXPECT_EQ(list.GetCount(), kElements);
    EXPECT_EQ(list.GetHead(), 9u);
    EXPECT_TRUE(std::is_sorted(list.begin(), list.end(), byTens));

    list.GetHead() = kElements + 10;
    list.Sort(); // restores the order after a change, too
    EXPECT_EQ(list.GetTail(), kElements + 10);
}

} // namespace
